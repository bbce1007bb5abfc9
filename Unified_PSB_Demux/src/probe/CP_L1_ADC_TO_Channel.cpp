#include "probe/CP_L1_ADC_TO_Channel.h"

#include "common/Console.h"
#include "probe/Channel_Map.h"
#include "probe/Super_Frame.h"
#include "wire/PSB_Format.h"
#include "wire/Stream_Anomalies.h"

#include <cstddef>
#include <typeinfo>
#include <utility>

namespace Pelgar::ORBE::demux {

namespace {

using channel_map::adcs_per_pair;
using channel_map::channels_per_pair;
using channel_map::pair_count;
using channel_map::slot_count;
using psb::counter_bits;
using psb::counter_max;
using psb::counter_part_bits;
using psb::counter_part_mask;

void sort_into_channels(const std::uint16_t* adc, std::uint16_t* channels, std::size_t slot) {
    std::uint16_t* destination = channels + adcs_per_pair * slot;
    for (std::size_t pair = 0; pair < pair_count; ++pair) {
        destination[channels_per_pair * pair] = adc[adcs_per_pair * pair];
        destination[channels_per_pair * pair + 1] = adc[adcs_per_pair * pair + 1];
    }
}

} // namespace

void CP_L1_ADC_TO_Channel::publish_adc_data(const std::uint16_t (&adc)[adc_frame_length]) {
    const std::uint32_t dw_counter =
        follow_frame_counter(adc[psb::counter_high_value], adc[psb::counter_low_value]);

    // The first frame of a super frame carries the LFP band, the other twelve the AP band.
    const std::uint32_t phase = dw_counter % psb::frames_per_super_frame;
    if (phase != 0) {
        const std::size_t slot = phase - 1;
        sort_into_channels(adc, m_ap_ch_data, slot);
        if (slot == slot_count - 1) {
            publish_ap();
        }
    } else {
        const std::size_t slot = dw_counter / psb::frames_per_super_frame % slot_count;
        sort_into_channels(adc, m_lp_ch_data, slot);
        if (slot == slot_count - 1) {
            publish_lp();
        }
    }

    m_prev_dw_counter = dw_counter;
    m_frame_count = m_frame_count + 1;
}

// The state is brought on in the steps of `publish_adc_data`, as far as a listener that throws can tell.
bool CP_L1_ADC_TO_Channel::publish_super_frame(const unsigned char* bytes) {
    // A class derived from this one, which looks at the frames itself, gets them one by one.
    if (typeid(*this) != typeid(CP_L1_ADC_TO_Channel)) {
        return false;
    }
    constexpr std::uint32_t last_frame = psb::frames_per_super_frame - 1;
    const std::uint32_t counter = super_frame::frame_counter(bytes, 0);
    const std::uint32_t high_part = m_three_word_counter_high_part;
    const std::uint32_t dw_counter = (high_part << counter_bits) | counter;
    const bool runs_on = counter == m_prev_two_part_counter + 1 && dw_counter == m_prev_dw_counter + 1;
    const bool begins_super_frame = dw_counter % psb::frames_per_super_frame == 0;
    const bool wraps = counter + last_frame > counter_max;
    if (!runs_on || !begins_super_frame || wraps || !super_frame::counts_on(bytes, counter)) {
        return false;
    }

    const std::size_t slot = dw_counter / psb::frames_per_super_frame % slot_count;
    super_frame::sort_lfp(bytes, m_lp_ch_data, slot);
    remember_counter(counter);
    if (slot == slot_count - 1) {
        publish_lp();
    }
    super_frame::sort_ap(bytes, m_ap_ch_data);
    remember_counter(counter + last_frame);
    m_prev_dw_counter = dw_counter + last_frame - 1;
    m_frame_count = m_frame_count + last_frame;
    publish_ap();
    m_prev_dw_counter = dw_counter + last_frame;
    m_frame_count = m_frame_count + 1;
    return true;
}

void CP_L1_ADC_TO_Channel::remember_counter(std::uint32_t two_part_counter) {
    m_prev_two_part_counter = two_part_counter;
    m_prev_counter_high_10 = static_cast<std::uint16_t>(two_part_counter >> counter_part_bits);
}

// Reports gaps and answers the counter extended to 32 bits.
std::uint32_t CP_L1_ADC_TO_Channel::follow_frame_counter(std::uint16_t high_word, std::uint16_t low_word) {
    const std::uint32_t two_part_counter =
        (std::uint32_t{high_word} << counter_part_bits) | std::uint32_t{low_word};
    if (two_part_counter != m_prev_two_part_counter + 1) [[unlikely]] {
        if (two_part_counter == 0 && m_prev_two_part_counter == counter_max) {
            anomaly::frame_number_rolled(m_prev_two_part_counter);
        } else {
            count_frame_gap();
            anomaly::frame_number_gap(high_word, low_word, m_prev_two_part_counter);
        }
    }
    m_prev_two_part_counter = two_part_counter;

    const std::uint16_t high_10 = high_word & counter_part_mask;
    if (high_10 == 0 && m_prev_counter_high_10 == counter_part_mask) [[unlikely]] {
        anomaly::high_part_incremented();
        m_three_word_counter_high_part.fetch_add(1);
    }
    m_prev_counter_high_10 = high_10;

    const std::uint32_t high_part = m_three_word_counter_high_part;
    const std::uint32_t dw_counter = (high_part << counter_bits) |
                                     (std::uint32_t{high_10} << counter_part_bits) |
                                     (std::uint32_t{low_word} & counter_part_mask);
    if (dw_counter != m_prev_dw_counter + 1) [[unlikely]] {
        anomaly::dw_counter_gap(m_prev_dw_counter, dw_counter);
    }
    return dw_counter;
}

void CP_L1_ADC_TO_Channel::publish_ap() {
    if (!m_l2_ch_result_listener.deliver(
            [&](auto& listener) { listener.publish_ap_ch_data(m_ap_ch_data); })) {
        anomaly::no_ap_destination();
    }
}

void CP_L1_ADC_TO_Channel::publish_lp() {
    if (!m_l2_ch_result_listener.deliver(
            [&](auto& listener) { listener.publish_lp_ch_data(m_lp_ch_data); })) {
        anomaly::no_lp_destination();
    }
}

void CP_L1_ADC_TO_Channel::burst_begins() {
    m_l2_ch_result_listener.begin_burst();
}

void CP_L1_ADC_TO_Channel::burst_ends() {
    m_l2_ch_result_listener.end_burst();
}

void CP_L1_ADC_TO_Channel::reset_and_resync_counters() {
    console::out("reset_and_resync_counters requested.\n");
    m_three_word_counter_high_part = 0;
}

void CP_L1_ADC_TO_Channel::set_l2_ch_result_listener(std::weak_ptr<I_L2_Demux_CH_Results> listener) {
    m_l2_ch_result_listener.set(std::move(listener));
}

std::weak_ptr<I_L2_Demux_CH_Results> CP_L1_ADC_TO_Channel::get_l2_ch_result_listener() const {
    return m_l2_ch_result_listener.get();
}

} // namespace Pelgar::ORBE::demux
