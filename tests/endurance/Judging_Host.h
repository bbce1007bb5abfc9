// Endurance test. A host that reads every port and the ADC inputs by the exported functions, on a thread
// each, and judges all that it gets. Made, started and ended by the main thread.
#pragma once

#include "ADC_Judge.h"
#include "Endless_Rows.h"
#include "Packet_Layout.h"
#include "Port_Judge.h"
#include "Stream_Pace.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

class Judging_Host {
public:
    // Ports 1 to `ports` of the slot.
    Judging_Host(Packet_Layout layout, int slot, unsigned ports, const Endless_Options& sent,
                 Stream_Pace& pace);

    ~Judging_Host() { finish(); }

    Judging_Host(const Judging_Host&) = delete;
    Judging_Host& operator=(const Judging_Host&) = delete;

    // The threads begin to read a stream that begins anew.
    void start();

    // What comes from now on may have gaps.
    void stop_judging() { m_judging = false; }

    // Waits for the threads to end. In the box's own mode they wait for packets until the basestation closes.
    void finish();

    // All that were judged, since construction.
    std::uint64_t port_packets() const { return m_port_packets; }

    std::uint64_t adc_packets() const { return m_adc_packets; }

    // The first thing that was wrong; empty when nothing was.
    std::string fault() const;

private:
    void read_port(unsigned port);
    void read_adc();
    void note(const std::string& fault);

    Packet_Layout m_layout;
    int m_slot;
    Stream_Pace& m_pace;
    std::deque<Port_Judge> m_ports;
    ADC_Judge m_adc;
    bool m_was_started = false;
    std::atomic<bool> m_ending{false};
    std::atomic<std::uint64_t> m_port_packets{0};
    std::atomic<std::uint64_t> m_adc_packets{0};
    std::atomic<bool> m_judging{false};
    mutable std::mutex m_mutex;
    std::string m_fault;
    std::vector<std::thread> m_threads;
};

} // namespace Pelgar::ORBE::test
