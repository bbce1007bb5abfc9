// Layer: demultiplexer. The 16-byte rows that the box interleaves into its one DMA stream: a marker with the
// id of the stream, a counter that runs within the stream, and seven words of payload.
#pragma once

#include "wire/PSB_Format.h"

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::demux::mux_row {

inline constexpr std::size_t length = 16;

// Byte 0: marker in the upper half, stream id in the lower.
inline constexpr std::size_t marker_offset = 0;
inline constexpr std::uint8_t marker_mask = 0xF0;
inline constexpr std::uint8_t marker = 0xD0;
inline constexpr std::uint8_t stream_id_mask = 0x0F;
inline constexpr std::size_t stream_id_count = 16;
// Stream ids below this one are the probe ports.
inline constexpr unsigned rhd_stream_id = 4;

inline bool has_marker(const std::uint8_t* row) {
    return (row[marker_offset] & marker_mask) == marker;
}

inline unsigned stream_id_of(const std::uint8_t* row) {
    return row[marker_offset] & stream_id_mask;
}

// Byte 1: row counter of the stream, modulo 256.
inline constexpr std::size_t counter_offset = 1;

// Bytes 2-15: seven words, least significant byte first.
inline constexpr std::size_t payload_offset = 2;
inline constexpr std::size_t payload_words = 7;
inline constexpr std::size_t payload_length = payload_words * sizeof(std::uint16_t);

// The super-frame start flag of a probe row as it lies in the upper byte of the first payload word.
inline constexpr std::size_t start_flag_offset = payload_offset + 1;
inline constexpr std::uint8_t start_flag = psb::super_frame_start >> 8;

inline bool starts_super_frame(const std::uint8_t* row) {
    return (row[start_flag_offset] & start_flag) != 0;
}

static_assert(payload_offset + payload_length == length);
static_assert(payload_length == psb::bytes_per_row);

} // namespace Pelgar::ORBE::demux::mux_row

namespace Pelgar::ORBE::demux {

// The probe ports, index 0..3.
inline constexpr unsigned np_port_count = mux_row::rhd_stream_id;

} // namespace Pelgar::ORBE::demux
