// Layer: demultiplexer. The framing of a probe's serial bus (PSB) as the box forwards it: words of 16 bits,
// one word of each of the seven lanes a row, five rows a frame, thirteen frames a super frame.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::demux::psb {

inline constexpr std::size_t lane_count = 7;
inline constexpr std::size_t words_per_row = lane_count;
inline constexpr std::size_t rows_per_frame = 5;
inline constexpr std::size_t words_per_frame = words_per_row * rows_per_frame;
inline constexpr std::size_t frames_per_super_frame = 13;
inline constexpr std::size_t words_per_super_frame = words_per_frame * frames_per_super_frame;

inline constexpr std::size_t bytes_per_row = words_per_row * sizeof(std::uint16_t);
inline constexpr std::size_t bytes_per_frame = words_per_frame * sizeof(std::uint16_t);
inline constexpr std::size_t bytes_per_super_frame = words_per_super_frame * sizeof(std::uint16_t);

// Bits 15-12 of a word: the number of its lane, 1 to 7.
inline constexpr std::uint16_t lane_tag_mask = 0xF000;
inline constexpr unsigned lane_tag_shift = 12;
// Bit 11: set on the first word of a super frame.
inline constexpr std::uint16_t super_frame_start = 0x0800;
// Bits 9-0: the sample.
inline constexpr std::uint16_t value_mask = 0x03FF;

// The last two of a frame's 35 values are the halves of its counter, the upper one first.
inline constexpr std::size_t counter_high_value = 33;
inline constexpr std::size_t counter_low_value = 34;
inline constexpr unsigned counter_part_bits = 10;
inline constexpr unsigned counter_bits = 2 * counter_part_bits;
inline constexpr std::uint16_t counter_part_mask = (1U << counter_part_bits) - 1U;
inline constexpr std::uint32_t counter_max = (1U << counter_bits) - 1U;

// Words travel least significant byte first and are copied as they lie.
static_assert(std::endian::native == std::endian::little);
static_assert(bytes_per_super_frame == 910);

} // namespace Pelgar::ORBE::demux::psb
