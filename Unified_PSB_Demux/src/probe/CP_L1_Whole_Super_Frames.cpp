#include "probe/CP_L1_Whole_Super_Frames.h"

#include "probe/Channel_Map.h"
#include "probe/Super_Frame.h"
#include "wire/PSB_Format.h"
#include "wire/Stream_Anomalies.h"

#include <cstddef>
#include <utility>

namespace Pelgar::ORBE::demux {

namespace {

using channel_map::slot_count;

// As `super_frame::counts_on`, also over a wrap.
bool counters_follow(const unsigned char* bytes, std::uint32_t first) {
    constexpr std::uint32_t last_frame = psb::frames_per_super_frame - 1;
    if (first + last_frame <= psb::counter_max) [[likely]] {
        return super_frame::counts_on(bytes, first);
    }
    for (std::uint32_t frame = 1; frame < psb::frames_per_super_frame; ++frame) {
        if (super_frame::frame_counter(bytes, frame) != ((first + frame) & psb::counter_max)) {
            return false;
        }
    }
    return true;
}

} // namespace

CP_L1_Whole_Super_Frames::CP_L1_Whole_Super_Frames(std::weak_ptr<I_Sample_Listener> listener) {
    m_sample_listener.set(std::move(listener));
}

bool CP_L1_Whole_Super_Frames::publish_super_frame(const unsigned char* bytes) {
    const std::uint32_t first_counter = super_frame::frame_counter(bytes, 0);
    if (!counters_follow(bytes, first_counter)) [[unlikely]] {
        return false;
    }
    if (!m_continuity.follow(first_counter)) [[unlikely]] {
        count_frame_gap();
    }
    const std::uint64_t number = m_counter.follow(first_counter);
    take_lfp_part(bytes, number);
    super_frame::sort_ap(bytes, m_ap_ch_data);
    if (const auto listener = m_sample_listener.lock()) {
        listener->begin_sample({number, number % slot_count == 0});
    }
    publish_ap();
    return true;
}

void CP_L1_Whole_Super_Frames::publish_adc_data(const std::uint16_t (&adc)[adc_frame_length]) {
    const std::uint32_t counter =
        std::uint32_t{adc[psb::counter_high_value]} << psb::counter_part_bits | adc[psb::counter_low_value];
    if (!m_continuity.follow_dropped(counter)) {
        count_frame_gap();
    }
    if (m_dropped_frames++ % psb::frames_per_super_frame == 0) {
        anomaly::super_frame_dropped(adc[psb::counter_high_value], adc[psb::counter_low_value]);
    }
}

// An LFP sample ends with its twelfth part, or without it when that part is lost.
void CP_L1_Whole_Super_Frames::take_lfp_part(const unsigned char* bytes, std::uint64_t number) {
    const std::uint64_t sample = number / slot_count;
    if (m_lfp_is_due && sample != m_lfp_sample) {
        publish_lp();
    }
    const std::size_t slot = number % slot_count;
    super_frame::sort_lfp(bytes, m_lp_ch_data, slot);
    m_lfp_sample = sample;
    m_lfp_is_due = slot != slot_count - 1;
    if (!m_lfp_is_due) {
        publish_lp();
    }
}

} // namespace Pelgar::ORBE::demux
