// Layer: demultiplexer. Sorts the ADC frames of one probe into channel order and delivers complete sets of AP
// and LFP band values. Called on the NP worker thread of the port; the listener and the resynchronisation
// come from other threads.
#pragma once

#include "common/Export.h"
#include "common/Listener_Slot.h"
#include "common/Relaxed.h"
#include "probe/I_L1_Demux_ADC_Results.h"
#include "probe/I_L2_Demux_CH_Results.h"

#include <cstdint>
#include <memory>

namespace Pelgar::ORBE::demux {

class ORBE_EXPORT CP_L1_ADC_TO_Channel : public I_L1_Demux_ADC_Results {
public:
    // Takes one ADC frame: 32 samples, an unused value and the two halves of a 20-bit frame counter. Delivers
    // 384 AP values after the twelfth AP frame of a super frame and 384 LFP values every twelve super frames,
    // on the calling thread. Every sample lands where the frame's own counter puts it, so a lost frame shifts
    // nothing; channels of frames that never came hold what the listener has left there, which is the value
    // from before only as long as the listener changes none. Never allocates in a healthy stream; outside a
    // burst it takes one lock a super frame, to reach the listener.
    void publish_adc_data(const std::uint16_t (&adc)[adc_frame_length]) override;

    // Takes the thirteen frames at once when their counters run on from the frame before and the first one
    // begins a super frame; delivers what the frames one by one would. Refuses them otherwise, and has then
    // changed nothing.
    bool publish_super_frame(const unsigned char* bytes) override;

    // In a burst the listener is looked up once, and told of it.
    void burst_begins() override;
    void burst_ends() override;

    // Starts the upper part of the 32-bit frame counter anew. Any thread.
    void reset_and_resync_counters() override;

    // The destination of the channel values, held weakly. Any thread.
    void set_l2_ch_result_listener(std::weak_ptr<I_L2_Demux_CH_Results> listener);
    std::weak_ptr<I_L2_Demux_CH_Results> get_l2_ch_result_listener() const;

    // Frames taken in since construction. Any thread.
    std::uint32_t get_frame_count() const { return m_frame_count; }

    // Places where the frame counter did not go on from the frame before, since construction. Any thread.
    std::uint64_t get_frame_gap_count() const { return m_frame_gaps; }

protected:
    void publish_ap();
    void publish_lp();

    void count_frame_gap() { m_frame_gaps.fetch_add(1); }

    // What is being gathered.
    std::uint16_t m_ap_ch_data[channel_count] = {};
    std::uint16_t m_lp_ch_data[channel_count] = {};

private:
    std::uint32_t follow_frame_counter(std::uint16_t high_word, std::uint16_t low_word);
    void remember_counter(std::uint32_t two_part_counter);

    Relaxed<std::uint32_t> m_frame_count{0};
    std::uint32_t m_prev_two_part_counter = 0xFFFFFFFF;
    Listener_Slot<I_L2_Demux_CH_Results> m_l2_ch_result_listener;
    // Counts the wraps of the 20-bit counter.
    Relaxed<std::uint16_t> m_three_word_counter_high_part{0};
    std::uint32_t m_prev_dw_counter = 0xFFFFFFFF;
    std::uint16_t m_prev_counter_high_10 = 0;
    Relaxed<std::uint64_t> m_frame_gaps{0};
};

} // namespace Pelgar::ORBE::demux
