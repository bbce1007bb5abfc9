// Layer: demultiplexer. What the data path prints when the stream is not as it should be. Called on the
// worker threads; kept out of line so that the straight path stays small. Each call allocates and writes one
// message.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::demux::anomaly {

// Rows of the DMA stream.
void row_counter_discontinuity(unsigned stream_id, std::uint32_t row_index, std::uint8_t previous,
                               std::uint8_t current);
void row_discarded(unsigned port);
void unknown_stream_id(unsigned stream_id);

// Blocks of probe data.
void block_too_small();
void block_not_whole_super_frames();
void frame_count_not_whole_super_frames();
void super_frame_align_failure();
void lane_tag_mismatch();
void super_frame_dropped(std::uint16_t high_word, std::uint16_t low_word);

// Frame counters of the probe.
void frame_number_rolled(std::uint32_t previous);
void frame_number_gap(std::uint16_t high_word, std::uint16_t low_word, std::uint32_t previous);
void high_part_incremented();
void dw_counter_gap(std::uint32_t previous, std::uint32_t current);

// Listeners that are not there.
void no_ap_destination();
void no_lp_destination();

} // namespace Pelgar::ORBE::demux::anomaly
