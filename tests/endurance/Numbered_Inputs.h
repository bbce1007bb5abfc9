// Endurance test. What the ADC and TTL inputs show: the number of the frame in the first four ADC inputs,
// noise that repeats in the others, and TTL inputs that change every half minute. The first TTL input, from
// which hosts take the sync level, stays low. Read on any thread.
#pragma once

#include "numbers/Hash.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::test {

class Numbered_Inputs {
public:
    static constexpr std::size_t input_count = 8;

    explicit Numbered_Inputs(std::uint64_t seed) {
        for (std::size_t i = 0; i < m_noise.size(); ++i) {
            // An input is never exactly at a comparator's threshold of 0 V.
            m_noise[i] = static_cast<std::uint16_t>(recording::mix(seed, i) | 1U);
        }
    }

    // Offset binary, as the box sends it.
    std::uint16_t word(std::uint64_t frame, std::size_t input) const {
        return input < number_inputs ? static_cast<std::uint16_t>(frame >> (16 * input))
                                     : m_noise[(frame * number_inputs + input) % m_noise.size()];
    }

    // All TTL inputs' word.
    static std::uint32_t ttl(std::uint64_t frame) {
        return static_cast<std::uint32_t>((frame >> 20U) & 0x7FU) << 9U;
    }

private:
    static constexpr std::size_t number_inputs = 4;

    std::array<std::uint16_t, 4096> m_noise{};
};

} // namespace Pelgar::ORBE::test
