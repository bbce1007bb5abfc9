#include "probe/CP_L1_ADC_TO_Channel.h"

#include "common/Console.h"
#include "wire/PSB_Format.h"
#include "wire/Stream_Anomalies.h"

#include <cstddef>
#include <utility>

namespace Pelgar::ORBE::demux {

namespace {

constexpr std::size_t adc_count = 32;
// Frames that carry one sample of every channel between them.
constexpr std::size_t slot_count = 12;
// Two neighbouring ADCs take turns on a run of 24 neighbouring channels: the even ADC on the even channels,
// the odd ADC on the odd ones. Slot j of a group therefore holds channels 24 m + 2 j and 24 m + 2 j + 1 of
// pair m.
constexpr std::size_t adcs_per_run = 2;
constexpr std::size_t channels_per_run = adcs_per_run * slot_count;

static_assert(channels_per_run * (adc_count / adcs_per_run) == channel_count);

// The frame counter follows the samples as two ten-bit values, the upper one first.
constexpr std::size_t counter_high_index = 33;
constexpr std::size_t counter_low_index = 34;
constexpr unsigned counter_part_bits = 10;
constexpr unsigned counter_bits = 2 * counter_part_bits;
constexpr std::uint16_t counter_part_mask = (1U << counter_part_bits) - 1U;
constexpr std::uint32_t counter_max = (1U << counter_bits) - 1U;

void sort_into_channels(const std::uint16_t* adc, std::uint16_t* channels, std::size_t slot) {
    std::uint16_t* destination = channels + adcs_per_run * slot;
    for (std::size_t run = 0; run < adc_count / adcs_per_run; ++run) {
        destination[channels_per_run * run] = adc[adcs_per_run * run];
        destination[channels_per_run * run + 1] = adc[adcs_per_run * run + 1];
    }
}

} // namespace

void CP_L1_ADC_TO_Channel::publish_adc_data(const std::uint16_t (&adc)[adc_frame_length]) {
    const std::uint32_t dw_counter = follow_frame_counter(adc[counter_high_index], adc[counter_low_index]);

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

// Reports gaps and answers the counter extended to 32 bits.
std::uint32_t CP_L1_ADC_TO_Channel::follow_frame_counter(std::uint16_t high_word, std::uint16_t low_word) {
    const std::uint32_t two_part_counter =
        (std::uint32_t{high_word} << counter_part_bits) | std::uint32_t{low_word};
    if (two_part_counter != m_prev_two_part_counter + 1) [[unlikely]] {
        if (two_part_counter == 0 && m_prev_two_part_counter == counter_max) {
            anomaly::frame_number_rolled(m_prev_two_part_counter);
        } else {
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
    if (const auto listener = m_l2_ch_result_listener.lock()) {
        listener->publish_ap_ch_data(m_ap_ch_data);
    } else {
        anomaly::no_ap_destination();
    }
}

void CP_L1_ADC_TO_Channel::publish_lp() {
    if (const auto listener = m_l2_ch_result_listener.lock()) {
        listener->publish_lp_ch_data(m_lp_ch_data);
    } else {
        anomaly::no_lp_destination();
    }
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
