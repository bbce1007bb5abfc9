// Test support, box road. Lets the box run ahead of the readers only so far that none of the library's packet
// queues, which drop what they cannot hold, overflows. Any thread.
#pragma once

#include "DMA_Source.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace Pelgar::ORBE::test {

class Pace {
public:
    // The ports' readers are 0 to 3, that of the ADC packets is this one.
    static constexpr std::size_t adc_reader = box_port_count;
    static constexpr std::size_t reader_count = box_port_count + 1;

    // The source stands still until a target is set.
    explicit Pace(DMA_Source& source);

    // So many ticks in all.
    void set_target(std::uint64_t ticks);

    // The reader has received one packet more.
    void received(std::size_t reader);

    // Nobody waits for this reader any more.
    void release(std::size_t reader);

    std::uint64_t count(std::size_t reader) const;

private:
    void update();

    DMA_Source& m_source;
    mutable std::mutex m_mutex;
    std::uint64_t m_first_tick;
    std::uint64_t m_target = 0;
    std::array<std::uint64_t, reader_count> m_received{};
    std::array<bool, reader_count> m_released{};
};

} // namespace Pelgar::ORBE::test
