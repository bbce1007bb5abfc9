// Endurance test. Which sample of its stream each tick carries: one after the other, or first with leaps that
// a host takes for lost samples and that bring every counter behind the stream near its wrap. No state; any
// thread.
#pragma once

#include "stream_format/Wire_Format.h"

#include <algorithm>
#include <cstdint>

namespace Pelgar::ORBE::test {

class Sample_Numbers {
public:
    // After some leaps the numbers run on from `start`, a multiple of twelve, without any.
    explicit Sample_Numbers(std::uint64_t start = 0) : m_start(start) {
        const std::uint64_t leaps = (start + longest_leap - 1) / longest_leap;
        m_leaps = (leaps + recording::slots_per_sample - 1) / recording::slots_per_sample *
                  recording::slots_per_sample;
    }

    // Of a port, from the tick on at which its probe began to count.
    std::uint64_t of_port(std::uint64_t tick) const {
        return tick < m_leaps ? m_start * tick / m_leaps : m_start + (tick - m_leaps);
    }

    // Of the ADC inputs, whose stamps of 32 bits allow far longer leaps: they come last.
    std::uint64_t of_adc(std::uint64_t tick) const {
        if (tick >= m_leaps) {
            return m_start + (tick - m_leaps);
        }
        const std::uint64_t before = std::min(m_start, (m_leaps - tick) * longest_adc_leap);
        return std::max(tick, m_start - before);
    }

    // The tick with that number, of one behind the leaps.
    std::uint64_t adc_tick(std::uint64_t number) const { return number - m_start + m_leaps; }

private:
    // A probe's counter of 20 bits may leave out 8 s, and the frames' stamps half of what they can tell.
    static constexpr std::uint64_t longest_leap = 241'900;
    static constexpr std::uint64_t longest_adc_leap = std::uint64_t{1} << 30U;

    std::uint64_t m_start;
    std::uint64_t m_leaps = 0;
};

} // namespace Pelgar::ORBE::test
