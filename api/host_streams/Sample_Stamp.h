// Layer: façade, host mode. Samples and the stamps that hosts see. Any thread; nothing blocks.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

inline constexpr std::uint64_t samples_per_second = 30'000;

// Counts of 100 kHz, three or four a sample, wrapping at 32 bits.
constexpr std::uint32_t stamp_of(std::uint64_t sample) {
    return static_cast<std::uint32_t>(sample * 10 / 3);
}

} // namespace Pelgar::ORBE::npoe_adapter
