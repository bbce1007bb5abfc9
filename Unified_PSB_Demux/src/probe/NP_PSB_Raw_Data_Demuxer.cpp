#include "probe/NP_PSB_Raw_Data_Demuxer.h"

#include "common/Console.h"
#include "probe/Super_Frame.h"
#include "wire/Stream_Anomalies.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

namespace Pelgar::ORBE::demux {

namespace {

using psb::lane_count;
using psb::rows_per_frame;
using psb::words_per_frame;
using psb::words_per_row;

static_assert(words_per_frame == adc_frame_length);

// The lane tags of a frame's words, as they lie in the words.
constexpr std::array<std::uint16_t, words_per_frame> make_lane_tags() {
    std::array<std::uint16_t, words_per_frame> tags{};
    for (std::size_t i = 0; i < words_per_frame; ++i) {
        tags[i] = static_cast<std::uint16_t>((i % words_per_row + 1) << psb::lane_tag_shift);
    }
    return tags;
}

constexpr std::array<std::uint16_t, words_per_frame> lane_tags = make_lane_tags();

// Word-serial input: bit 15 of a word is the sync bit, below it lie two bits of each lane, lane 0 uppermost.
constexpr unsigned sync_bit_shift = 15;
constexpr unsigned lane_0_shift = 12;
constexpr unsigned bits_per_beat = 2;
constexpr unsigned beat_mask = (1U << bits_per_beat) - 1U;
constexpr std::uint8_t sync_pattern_mask = 0x1F;
constexpr std::uint8_t sync_pattern = 0x14;
constexpr std::uint32_t beats_per_minor_frame = 5;
// Five minor frames carry values, the sixth closes the frame with zeros.
constexpr std::uint32_t closing_minor_frame = rows_per_frame;
constexpr std::uint32_t minor_frames_per_frame = closing_minor_frame + 1;

// Answers how many are wrong.
unsigned report_lane_tags(const std::array<std::uint16_t, words_per_frame>& words) {
    unsigned wrong = 0;
    for (std::size_t i = 0; i < words_per_frame; ++i) {
        if ((words[i] & psb::lane_tag_mask) != lane_tags[i]) {
            anomaly::lane_tag_mismatch();
            ++wrong;
        }
    }
    return wrong;
}

// The stages behind are told of what follows without a wait: super frames that are in order. It ends with the
// object, and before something is printed, which may take any time.
class Burst {
public:
    explicit Burst(I_L1_Demux_ADC_Results& listener) : m_listener(listener) {}

    ~Burst() { end(); }

    Burst(const Burst&) = delete;
    Burst& operator=(const Burst&) = delete;

    void go_on() {
        if (!std::exchange(m_is_on, true)) {
            m_listener.burst_begins();
        }
    }

    void end() {
        if (std::exchange(m_is_on, false)) {
            m_listener.burst_ends();
        }
    }

private:
    I_L1_Demux_ADC_Results& m_listener;
    bool m_is_on = false;
};

} // namespace

NP_PSB_Raw_Data_Demuxer::NP_PSB_Raw_Data_Demuxer(I_L1_Demux_ADC_Results& listener) : m_listener(listener) {}

void NP_PSB_Raw_Data_Demuxer::feed_psb_raw_data_block_buffer(const unsigned char* data,
                                                             unsigned int byte_count) {
    if (byte_count < psb::bytes_per_super_frame) {
        anomaly::block_too_small();
        return;
    }
    if (byte_count % psb::bytes_per_super_frame != 0) {
        anomaly::block_not_whole_super_frames();
        return;
    }
    const std::size_t super_frame_count = byte_count / psb::bytes_per_super_frame;
    if (byte_count / psb::bytes_per_frame != super_frame_count * psb::frames_per_super_frame) {
        anomaly::frame_count_not_whole_super_frames();
    }

    Burst burst(m_listener);
    const unsigned char* const end = data + byte_count;
    const unsigned char* last_whole = nullptr;
    for (; data != end; data += psb::bytes_per_super_frame) {
        if (super_frame::is_in_order(data)) [[likely]] {
            burst.go_on();
            if (m_listener.publish_super_frame(data)) [[likely]] {
                last_whole = data;
                continue;
            }
        }
        burst.end();
        if (!super_frame::has_start_flag(data)) [[unlikely]] {
            anomaly::super_frame_align_failure();
            break;
        }
        last_whole = nullptr;
        publish_frames(data);
    }
    if (last_whole != nullptr) {
        // Whatever comes next goes on from the last frame.
        decode_frame(last_whole + psb::bytes_per_super_frame - psb::bytes_per_frame);
    }
}

void NP_PSB_Raw_Data_Demuxer::publish_frames(const unsigned char* super_frame) {
    for (std::size_t frame = 0; frame < psb::frames_per_super_frame; ++frame) {
        decode_frame(super_frame + frame * psb::bytes_per_frame);
        m_listener.publish_adc_data(m_adc_frame);
    }
}

void NP_PSB_Raw_Data_Demuxer::decode_frame(const unsigned char* data) {
    std::array<std::uint16_t, words_per_frame> words;
    std::memcpy(words.data(), data, psb::bytes_per_frame);

    unsigned differences = 0;
    for (std::size_t i = 0; i < words_per_frame; ++i) {
        differences |= static_cast<unsigned>(words[i] ^ lane_tags[i]);
    }
    if ((differences & psb::lane_tag_mask) != 0) [[unlikely]] {
        m_wrong_tags.fetch_add(report_lane_tags(words));
    }

    for (std::size_t lane = 0; lane < lane_count; ++lane) {
        for (std::size_t row = 0; row < rows_per_frame; ++row) {
            m_adc_frame[rows_per_frame * lane + row] = words[words_per_row * row + lane] & psb::value_mask;
        }
    }
    std::memcpy(m_lane_words, words.data() + words_per_frame - words_per_row, psb::bytes_per_row);
    m_minor_frame_no = rows_per_frame - 1;
}

void NP_PSB_Raw_Data_Demuxer::feed_psb_raw_data(unsigned short word) {
    const unsigned bits = word;
    m_sync_shift_reg = static_cast<std::uint8_t>(unsigned{m_sync_shift_reg} << 1U | bits >> sync_bit_shift);
    if ((m_sync_shift_reg & sync_pattern_mask) == sync_pattern) {
        follow_sync_pattern();
    }

    for (std::size_t lane = 0; lane < lane_count; ++lane) {
        const unsigned pair = (bits >> (lane_0_shift - bits_per_beat * lane)) & beat_mask;
        m_lane_words[lane] = static_cast<std::uint16_t>(unsigned{m_lane_words[lane]} << bits_per_beat | pair);
    }
    if (!m_sync_acquired) {
        return;
    }

    if (m_beat_no == 0) {
        store_column();
        if (m_minor_frame_no == rows_per_frame - 1) {
            m_listener.publish_adc_data(m_adc_frame);
        }
        if (++m_minor_frame_no == minor_frames_per_frame) {
            ++m_frame_count;
            m_minor_frame_no = 0;
        }
    }
    if (++m_beat_no == beats_per_minor_frame) {
        m_beat_no = 0;
    }
}

void NP_PSB_Raw_Data_Demuxer::follow_sync_pattern() {
    m_sync_pattern_count.fetch_add(1);
    if (!m_sync_acquired) {
        console::out("Initial PSB Frame sync aquired\n");
    }
    m_sync_acquired = true;
    if (m_minor_frame_no != 0) {
        console::out("Resync_1\n");
        m_minor_frame_no = 0;
    }
    if (m_beat_no != 0) {
        console::out("Resync_2\n");
        m_beat_no = 0;
    }
}

void NP_PSB_Raw_Data_Demuxer::store_column() {
    if (m_minor_frame_no > closing_minor_frame) {
        console::err("minor_frame_no > 5\n");
        return;
    }
    if (m_minor_frame_no == closing_minor_frame) {
        check_closing_column();
        return;
    }
    for (std::size_t lane = 0; lane < lane_count; ++lane) {
        m_adc_frame[rows_per_frame * lane + m_minor_frame_no] = m_lane_words[lane] & psb::value_mask;
    }
}

void NP_PSB_Raw_Data_Demuxer::check_closing_column() {
    for (const std::uint16_t lane_word : m_lane_words) {
        if ((lane_word & psb::value_mask) != 0) {
            console::err("not zero beat on frame 5\n");
            if (m_anomaly_source != nullptr) {
                console::out("Anomaly at pos : ", static_cast<std::int64_t>(m_anomaly_source->tellg()), '\n');
            }
            return;
        }
    }
}

void NP_PSB_Raw_Data_Demuxer::reset_sync() {
    m_sync_acquired = false;
}

} // namespace Pelgar::ORBE::demux
