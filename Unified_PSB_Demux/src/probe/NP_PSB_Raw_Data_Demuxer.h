// Layer: demultiplexer. Cuts the serial bus stream of one probe into ADC frames. Called on the NP worker
// thread of the port; never allocates in a healthy stream, never blocks.
#pragma once

#include "common/Export.h"
#include "common/Relaxed.h"
#include "probe/I_L1_Demux_ADC_Results.h"
#include "wire/PSB_Format.h"

#include <cstdint>
#include <istream>

namespace Pelgar::ORBE::demux {

class ORBE_EXPORT NP_PSB_Raw_Data_Demuxer {
public:
    // The listener must outlive the demuxer.
    explicit NP_PSB_Raw_Data_Demuxer(I_L1_Demux_ADC_Results& listener);

    // Block input: whole super frames of 13 frames, 910 bytes each. A block of another size is ignored whole;
    // a super frame that does not begin with the start flag ends the block; a word with a wrong lane tag is
    // reported and used.
    void feed_psb_raw_data_block_buffer(const unsigned char* data, unsigned int byte_count);

    // Word-serial input: one beat of the seven lanes, two bits a lane, with the sync bit on top. Nothing is
    // published before the first sync pattern.
    void feed_psb_raw_data(unsigned short word);

    // Makes the word-serial input look for the sync pattern again. Any thread.
    void reset_sync();

    // A stream whose read position is printed with anomalies of the word-serial input, or null. It must
    // outlive the demuxer or be taken back.
    void set_anomaly_source(std::istream* source) { m_anomaly_source = source; }

    // Sync patterns seen on the word-serial input. Any thread.
    std::uint32_t get_sync_pattern_count() const { return m_sync_pattern_count; }

    // Words of the block input with a wrong lane tag. Any thread.
    std::uint64_t get_wrong_tag_count() const { return m_wrong_tags; }

    // Frames completed on the word-serial input. The thread that feeds.
    std::uint32_t get_frame_count() const { return m_frame_count; }

private:
    void publish_frames(const unsigned char* super_frame);
    void decode_frame(const unsigned char* data);
    void follow_sync_pattern();
    void store_column();
    void check_closing_column();

    std::uint16_t m_adc_frame[adc_frame_length] = {};
    // The last eight sync bits of the word-serial input.
    std::uint8_t m_sync_shift_reg = 0;
    // The current row (block input) or the last bits of each lane (word-serial input).
    std::uint16_t m_lane_words[psb::lane_count] = {};
    std::uint32_t m_beat_no = 0;
    std::uint32_t m_minor_frame_no = 0;
    std::uint32_t m_frame_count = 0;
    Relaxed<bool> m_sync_acquired{false};
    I_L1_Demux_ADC_Results& m_listener;
    std::istream* m_anomaly_source = nullptr;
    Relaxed<std::uint32_t> m_sync_pattern_count{0};
    Relaxed<std::uint64_t> m_wrong_tags{0};
};

} // namespace Pelgar::ORBE::demux
