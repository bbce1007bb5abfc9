// Layer: demultiplexer. One frame of the Intan RHD stream as the RHD worker hands it to its listener.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace Pelgar::ORBE::demux {

// Words that one data stream contributes to a frame: 32 amplifier channels and 3 auxiliary command results.
inline constexpr std::size_t rhd_words_per_stream = 35;
// Data streams that the RHD interface can enable.
inline constexpr std::size_t rhd_max_stream_count = 32;
inline constexpr std::size_t rhd_board_adc_count = 8;
// The frame magic of the RHD interface; its first word on the wire is the lowest.
inline constexpr std::uint64_t rhd_frame_preamble = 0xD7A22AAA38132A53;

// What one data stream contributes to a frame.
using RHD_Stream_Words = std::array<std::uint16_t, rhd_words_per_stream>;

struct RHD_Frame {
    std::uint64_t preamble = 0;
    std::uint32_t timestamp = 0;
    // One array for each enabled stream; the entries beyond stay empty.
    std::array<std::unique_ptr<RHD_Stream_Words>, rhd_max_stream_count> amplifier_data;
    std::array<std::uint16_t, rhd_board_adc_count> board_adc_data{};
    std::uint32_t ttl_in = 0;
    std::uint32_t ttl_out = 0;
};

} // namespace Pelgar::ORBE::demux
