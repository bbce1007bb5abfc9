// Tools, recorder. How much of a stream waits in memory before it is written: a quarter of a second, which is
// what a program that is killed loses, and not more than a disk takes well at once. Any thread; nothing
// blocks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::recorder {

// Bytes of rows with so many columns of 16 bits.
constexpr std::size_t flush_size(std::size_t columns, int sample_rate) {
    constexpr std::size_t most = 1U << 20U;
    return std::min(most, columns * sizeof(std::int16_t) * static_cast<std::size_t>(sample_rate) / 4);
}

} // namespace Pelgar::ORBE::recorder
