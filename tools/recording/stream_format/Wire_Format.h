// Tools, recording library. The numbers of the box's wire formats: rows of the DMA stream, words and super
// frames of a probe's serial bus (PSB), frames of the RHD headstage. They are stated here once more, apart
// from the demultiplexer's, so that recordings check the demultiplexer instead of repeating it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::recording {

// Rows and transfer words lie in a recording as the card delivers them, low byte first.
static_assert(std::endian::native == std::endian::little);

// A row: marker nibble and stream id, row counter of the stream, seven 16-bit words.
inline constexpr std::size_t row_bytes = 16;
inline constexpr std::size_t row_header_bytes = 2;
inline constexpr std::size_t row_words = 7;
inline constexpr std::size_t row_payload_bytes = row_words * sizeof(std::uint16_t);
inline constexpr std::uint8_t row_marker = 0xD0;
inline constexpr std::uint8_t row_marker_mask = 0xF0;
inline constexpr std::uint8_t row_stream_mask = 0x0F;

// Stream ids: 0 to 3 are the probe ports 1 to 4, 4 is the RHD headstage, the rest is unknown.
inline constexpr unsigned port_count = 4;
inline constexpr unsigned rhd_stream = 4;
inline constexpr unsigned first_unknown_stream = 5;
inline constexpr unsigned stream_count = 16;

// A PSB word: lane tag, super-frame start flag, ten bits of sample.
inline constexpr unsigned lane_tag_shift = 12;
inline constexpr std::uint16_t lane_tag_mask = 0xF000;
inline constexpr std::uint16_t super_frame_flag = 0x0800;
inline constexpr std::uint16_t sample_mask = 0x03FF;

// A frame is five rows of seven lanes; thirteen frames make a super frame, which carries one AP sample of
// every channel and a twelfth of an LFP sample.
inline constexpr std::size_t rows_per_frame = 5;
inline constexpr std::size_t words_per_frame = rows_per_frame * row_words;
inline constexpr std::size_t frames_per_super_frame = 13;
inline constexpr std::size_t rows_per_super_frame = frames_per_super_frame * rows_per_frame;
inline constexpr std::size_t words_per_super_frame = frames_per_super_frame * words_per_frame;
inline constexpr std::size_t slots_per_sample = 12;

inline constexpr std::size_t adc_count = 32;
inline constexpr std::size_t channel_count = 384;

// Where a frame's 35 values hold the two halves of its 20-bit counter.
inline constexpr std::size_t counter_high_index = 33;
inline constexpr std::size_t counter_low_index = 34;
inline constexpr unsigned counter_half_bits = 10;
inline constexpr unsigned counter_bits = 20;
inline constexpr std::uint32_t counter_mask = (1U << counter_bits) - 1;

// Value i of a frame is sent in lane i / 5, row i % 5; this is its place among the frame's 35 words.
constexpr std::size_t word_of_value(std::size_t value) {
    return value % rows_per_frame * row_words + value / rows_per_frame;
}

// What the library moves at once: rows in pieces of 1 MiB, a port's super frames in blocks.
inline constexpr std::size_t piece_bytes = std::size_t{1} << 20;
inline constexpr std::size_t super_frames_per_block = 1792;
inline constexpr std::size_t rows_per_block = super_frames_per_block * rows_per_super_frame;
inline constexpr std::size_t words_per_block = super_frames_per_block * words_per_super_frame;

inline constexpr double super_frames_per_second = 30000.0;

// An RHD frame: magic, time stamp, 35 words of every data stream, filler, two words without meaning here,
// eight ADC inputs, TTL inputs, TTL outputs. Wide numbers are sent low word first.
inline constexpr std::uint64_t rhd_magic = 0xD7A22AAA38132A53;
inline constexpr std::size_t rhd_magic_words = 4;
inline constexpr std::size_t rhd_words_per_stream = 35;
inline constexpr std::size_t rhd_max_streams = 32;
inline constexpr std::size_t rhd_unused_words = 2;
inline constexpr std::size_t rhd_adc_inputs = 8;

constexpr std::uint16_t rhd_magic_word(std::size_t index) {
    return static_cast<std::uint16_t>(rhd_magic >> (16 * index));
}

constexpr std::size_t rhd_filler_words(std::size_t streams) {
    return streams % 4;
}

constexpr std::size_t rhd_frame_words(std::size_t streams) {
    return 20 + rhd_words_per_stream * streams + rhd_filler_words(streams);
}

} // namespace Pelgar::ORBE::recording
