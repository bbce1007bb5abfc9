// Tools, recorder. Turns the stamps of one stream, which wrap at 32 bits, into sample numbers, which do not.
// The stream's thread; nothing blocks.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::recorder {

class Sample_Numbers {
public:
    // The number of the sample with this stamp, counted from the trigger. Stamps count 100 kHz, three or four
    // a sample, rounded down, so that their sample is found by rounding up. The first one is of the
    // first 11.9 hours; each one behind it is later than the one before, by less than 11.9 hours. The same
    // stamp twice throws std::invalid_argument.
    std::uint64_t number_of(std::uint32_t stamp) {
        const auto step = static_cast<std::uint32_t>(stamp - static_cast<std::uint32_t>(m_stamp));
        if (step == 0 && m_is_started) {
            throw std::invalid_argument("two samples of a stream have the stamp " + std::to_string(stamp));
        }
        m_is_started = true;
        m_stamp += step;
        return (m_stamp * 3 + 9) / 10;
    }

private:
    bool m_is_started = false;
    std::uint64_t m_stamp = 0; // without its wraps
};

} // namespace Pelgar::ORBE::recorder
