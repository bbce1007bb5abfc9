// Layer: device controller. The arithmetic of the gain correction: exact, without a branch, so that the
// compiler vectorises it. Called on the NP worker threads; never blocks.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE {

// The float product of an unsigned value and its factor, truncated toward zero and kept to 16 bits. A product
// beyond 32 bits, or none at all (a factor that is not a number), gives 0, as the processor's own conversion
// does.
inline std::uint16_t gain_product(std::uint16_t value, float factor) {
    constexpr float limit = 2147483648.0F;
    const float product = static_cast<float>(value) * factor;
    const float in_range = product >= -limit && product < limit ? product : 0.0F;
    return static_cast<std::uint16_t>(static_cast<std::int32_t>(in_range));
}

template <std::size_t N>
void apply_gain(std::uint16_t (&values)[N], const float* factors) {
    for (std::size_t i = 0; i < N; ++i) {
        values[i] = gain_product(values[i], factors[i]);
    }
}

} // namespace Pelgar::ORBE
