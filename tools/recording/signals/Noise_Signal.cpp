#include "signals/Noise_Signal.h"

#include "numbers/Hash.h"

#include <algorithm>
#include <array>

namespace Pelgar::ORBE::recording {

namespace {

// Six ten-bit values fit one 64-bit random number.
constexpr std::size_t values_per_draw = 6;
constexpr std::size_t draws = channel_count / values_per_draw;

} // namespace

void Noise_Signal::fill(Band band, std::uint64_t sample, std::span<const std::uint16_t> channels,
                        std::span<std::uint16_t, channel_count> values) {
    const std::uint64_t seed = mix(m_seed + static_cast<std::uint64_t>(band), sample);
    std::array<std::uint16_t, channel_count> noise;
    for (std::size_t draw = 0; draw < draws; ++draw) {
        std::uint64_t random = mix(seed + draw);
        for (std::size_t i = 0; i < values_per_draw; ++i) {
            noise[draw * values_per_draw + i] = static_cast<std::uint16_t>(random & sample_mask);
            random >>= 10;
        }
    }
    if (channels.size() == channel_count) {
        std::copy(noise.begin(), noise.end(), values.begin());
        return;
    }
    for (const std::uint16_t channel : channels) {
        values[channel] = noise[channel];
    }
}

} // namespace Pelgar::ORBE::recording
