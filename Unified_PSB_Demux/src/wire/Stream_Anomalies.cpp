#include "wire/Stream_Anomalies.h"

#include "common/Console.h"

#include <loguru.hpp>

namespace Pelgar::ORBE::demux::anomaly {

void row_counter_discontinuity(unsigned stream_id, std::uint32_t row_index, std::uint8_t previous,
                               std::uint8_t current) {
    console::out("Possible demux row counter disconitinuty for demux ch : ", stream_id,
                 " at row : ", row_index, ", prev value : ", unsigned{previous},
                 ", current value : ", unsigned{current}, '\n');
}

void row_discarded(unsigned port) {
    console::out("Resync to super frame in progress. Row discarded. Demux ch : ", port, '\n');
}

void unknown_stream_id(unsigned stream_id) {
    LOG_F(WARNING, "Unknown demux stream id : %x ", stream_id);
}

void block_too_small() {
    console::err("Buffer size should contain at least (13 * 35) = 455 words\n");
}

void block_not_whole_super_frames() {
    console::err("Buffer size should divisible with 455 words\n");
}

void frame_count_not_whole_super_frames() {
    console::err("Warning frame counter is not divisible with 13\n");
}

void super_frame_align_failure() {
    console::err("Super frame align failure\n");
}

void lane_tag_mismatch() {
    console::err("Warning shift reg mismatch\n");
}

void super_frame_dropped(std::uint16_t high_word, std::uint16_t low_word) {
    console::err("Super frame dropped because it is damaged, first counter (two part) : ", high_word, ' ',
                 low_word, '\n');
}

void frame_number_rolled(std::uint32_t previous) {
    console::out("frame_number rolled : ", 0, ", prev count : ", previous, '\n');
}

void frame_number_gap(std::uint16_t high_word, std::uint16_t low_word, std::uint32_t previous) {
    console::err("check_frame_number_continuity failed, current counter (two part) : ", unsigned{high_word},
                 ' ', unsigned{low_word}, ", prev counter : ", previous, '\n');
}

void high_part_incremented() {
    console::out("Incrementing m_three_word_counter_high_part\n");
}

void dw_counter_gap(std::uint32_t previous, std::uint32_t current) {
    console::err(" stream DW counter discontiutiy. Prev DW counter : ", previous,
                 ", current DW counter : ", current, '\n');
}

void no_ap_destination() {
    console::err("publish_ap_ch_data destination it not alive\n");
}

void no_lp_destination() {
    console::err("publish_lp_ch_data destination it not alive\n");
}

} // namespace Pelgar::ORBE::demux::anomaly
