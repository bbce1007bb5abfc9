// Test support, host mode. The reading threads of an acquisition program: one a port and one for the ADC
// inputs, which sleep between reads. Made and ended by the host's thread.
#pragma once

#include "ADC_Check.h"
#include "Port_Check.h"

#include <atomic>
#include <deque>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

class Host_Readers {
public:
    // Begins to read the ports of `port_slot`, and with `adc_row_length` the ADC inputs of `adc_slot`.
    Host_Readers(int port_slot, const std::vector<int>& ports, int adc_slot, int adc_row_length);

    ~Host_Readers() { finish(); }

    Host_Readers(const Host_Readers&) = delete;
    Host_Readers& operator=(const Host_Readers&) = delete;

    // The threads end after the read that they are in, and are waited for without a limit.
    void finish();

    // Packets of the port that has the fewest.
    std::uint64_t fewest_packets() const;

    std::uint64_t adc_packets() const { return m_adc_packets; }

    // Once finished.
    const Port_Check& port(std::size_t index) const { return m_checks[index]; }

    const ADC_Check& adc() const { return m_adc; }

    std::vector<std::string> faults() const;

private:
    void read_port(std::size_t index);
    void read_adc();

    int m_port_slot;
    std::vector<int> m_ports;
    int m_adc_slot;
    int m_adc_row_length;
    std::atomic<bool> m_ending{false};
    std::deque<Port_Check> m_checks;
    std::deque<std::atomic<std::uint64_t>> m_packets;
    ADC_Check m_adc;
    std::atomic<std::uint64_t> m_adc_packets{0};
    std::deque<std::string> m_read_faults; // one place a thread
    std::vector<std::thread> m_threads;
};

} // namespace Pelgar::ORBE::test
