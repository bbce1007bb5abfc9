// Layer: demultiplexer. As CP_L1_ADC_TO_Channel, for consumers that must know which sample is which: takes
// super frames whole or not at all, follows the probe's counter beyond 32 bits, and announces each sample.
// Called on the NP worker thread of the port.
#pragma once

#include "common/Listener_Slot.h"
#include "probe/CP_L1_ADC_TO_Channel.h"
#include "probe/Frame_Continuity.h"
#include "probe/I_Sample_Listener.h"
#include "probe/Super_Frame_Counter.h"

#include <cstdint>
#include <memory>

namespace Pelgar::ORBE::demux {

class CP_L1_Whole_Super_Frames : public CP_L1_ADC_TO_Channel {
public:
    // `listener` is held weakly.
    explicit CP_L1_Whole_Super_Frames(std::weak_ptr<I_Sample_Listener> listener);

    // Publishes the AP values, and the LFP values when all twelve parts have come or, where parts are lost,
    // as soon as the next sample begins; the channels of lost parts keep their values. Refuses a super frame
    // whose frame counters do not follow each other.
    bool publish_super_frame(const unsigned char* bytes) override;

    // However many they are, the next one is given its right number.
    void skip_super_frames(std::uint32_t count) override {
        m_counter.skip(count);
        m_continuity.skip(count);
    }

    // The frames of a super frame that is not in order come here one by one. They are reported and dropped.
    void publish_adc_data(const std::uint16_t (&adc)[adc_frame_length]) override;

private:
    void take_lfp_part(const unsigned char* bytes, std::uint64_t number);

    Listener_Slot<I_Sample_Listener> m_sample_listener;
    Super_Frame_Counter m_counter;
    Frame_Continuity m_continuity;
    std::uint64_t m_lfp_sample = 0;
    bool m_lfp_is_due = false;
    std::uint32_t m_dropped_frames = 0;
};

} // namespace Pelgar::ORBE::demux
