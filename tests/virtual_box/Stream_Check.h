// Test support, box road. Four port readers and an ADC reader at the exported functions, each on a thread of
// its own, that compare every packet with what the bytes that left the box must yield. Made and used by the
// test's thread.
#pragma once

#include "Pace.h"
#include "Piece_Queue.h"

#include <NeuropixAPI.h>

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::test {

class Stream_Check {
public:
    // Whether the ADC packets' status words are compared too. They depend on the TTL inputs that the process
    // has seen before, and can be told only from the first acquisition on.
    enum class ADC_Status : std::uint8_t { compared, not_compared };

    // The box stands still until `run_to`.
    explicit Stream_Check(DMA_Source& source, ADC_Status adc_status = ADC_Status::compared);

    ~Stream_Check();
    Stream_Check(const Stream_Check&) = delete;
    Stream_Check& operator=(const Stream_Check&) = delete;

    // What the library does to a port's samples on their way. Only before `run_to`.
    using Correction = std::function<void(unsigned port, Neuropixels::electrodePacket& packet)>;

    void set_correction(Correction correction) { m_correction = std::move(correction); }

    // Does not compare the first packet of each port, in which samples of an earlier acquisition may stand.
    // Only before `run_to`.
    void skip_first_packets() { m_compare_first_packets = false; }

    // Lets the box make so many ticks in all and returns once the last whole read is through and its packets
    // are compared; false when nothing has moved for a long time.
    bool run_to(std::uint64_t ticks);

    // The same without waiting.
    void allow(std::uint64_t ticks) { m_pace.set_target(ticks); }

    // Blocks until all readers have received what is due; false as above.
    bool wait_until_idle() const;

    // No reader calls the library between the two. Only while they are idle.
    void pause();
    void resume();

    // Ends the readers. Closes the basestation when one is not idle, since nothing else brings it back.
    void finish();

    // API port 1..4.
    std::uint64_t packets(unsigned port) const { return m_pace.count(port - 1); }

    std::uint64_t adc_packets() const { return m_pace.count(Pace::adc_reader); }

    // What was not as it had to be, the first difference of each reader.
    std::vector<std::string> differences() const;

private:
    void read_port(unsigned port);
    void read_adc();
    void wait_while_paused();
    void note(const std::string& text);
    bool all_idle() const;

    DMA_Source& m_source;
    ADC_Status m_adc_status;
    Correction m_correction;
    bool m_compare_first_packets = true;
    Pace m_pace;
    std::array<Piece_Queue, Pace::reader_count> m_queues;
    mutable std::mutex m_mutex;
    std::condition_variable m_resumed;
    bool m_paused = false;
    std::vector<std::string> m_differences;
    std::vector<std::thread> m_threads;
};

} // namespace Pelgar::ORBE::test
