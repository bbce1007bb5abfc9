// Layer: device controller, probe link. The memory image of one shift-register chain of the probe ASIC.
// Edited on the host's threads by the probe configuration; never blocks, never allocates.
#pragma once

#include "common/Checked_Index.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Pelgar::ORBE {

// The byte as the chain takes it in: its first bit is shifted in last, so bit 0 becomes bit 7.
constexpr std::uint8_t reverse_bits(std::uint8_t byte) {
    unsigned reversed = 0;
    for (unsigned bit = 0; bit < 8; ++bit) {
        reversed |= ((unsigned{byte} >> bit) & 1U) << (7 - bit);
    }
    return static_cast<std::uint8_t>(reversed);
}

// Bit n of the chain is bit n mod 8 of byte n / 8, least significant bit first. Positions beyond the chain
// throw std::out_of_range.
template <std::size_t byte_count>
class Shift_Register_Image {
public:
    static constexpr std::size_t size_in_bytes = byte_count;

    bool bit(std::size_t position) const {
        const unsigned byte = checked_at(m_bytes, position / bits_per_byte);
        return ((byte >> (position % bits_per_byte)) & 1U) != 0;
    }

    // Returns how the number of set bits changed: +1, 0 or -1.
    int set_bit(std::size_t position, bool value) {
        std::uint8_t& byte = checked_at(m_bytes, position / bits_per_byte);
        const unsigned mask = 1U << (position % bits_per_byte);
        const bool was_set = (byte & mask) != 0;
        byte = static_cast<std::uint8_t>(value ? byte | mask : byte & ~mask);
        return static_cast<int>(value) - static_cast<int>(was_set);
    }

    // Writes the low `width` bits of `value` from `position` on, least significant bit first, and moves
    // `position` behind them.
    void write_bits(std::size_t& position, std::uint32_t value, unsigned width) {
        for (unsigned bit = 0; bit < width; ++bit) {
            set_bit(position++, ((value >> bit) & 1U) != 0);
        }
    }

    std::span<const std::uint8_t, byte_count> bytes() const { return m_bytes; }

private:
    static constexpr std::size_t bits_per_byte = 8;

    std::array<std::uint8_t, byte_count> m_bytes{};
};

} // namespace Pelgar::ORBE
