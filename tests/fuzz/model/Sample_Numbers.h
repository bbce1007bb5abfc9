// Road model: samples numbered from 0 by a counter that begins anywhere. What the counter leaves out is left
// out; one that does not go forward belongs to the next sample.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::road_model {

class Sample_Numbers {
public:
    void restart() { m_is_started = false; }

    // `step` is how far the counter has gone since the sample before.
    std::uint64_t next(std::int64_t step) {
        if (!m_is_started) {
            m_is_started = true;
            m_number = 0;
        } else {
            m_number += step > 0 ? static_cast<std::uint64_t>(step) : 1;
        }
        return m_number;
    }

    // Counts of 100 kHz.
    static std::uint32_t stamp(std::uint64_t number) {
        return static_cast<std::uint32_t>(number / 3 * 10 + number % 3 * 10 / 3);
    }

private:
    bool m_is_started = false;
    std::uint64_t m_number = 0;
};

} // namespace Pelgar::ORBE::road_model
