// Layer: demultiplexer. Receives the ADC frames that are cut out of a probe's serial bus. Called on the NP
// worker thread of the port.
#pragma once

#include "common/Export.h"

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::demux {

// Values in one ADC frame: 32 ADC samples, one value without a use, and the two halves of the frame counter.
inline constexpr std::size_t adc_frame_length = 35;

class ORBE_EXPORT I_L1_Demux_ADC_Results {
public:
    // One frame of 35 ten-bit values. The array is valid for the call only.
    virtual void publish_adc_data(const std::uint16_t (&adc)[adc_frame_length]) = 0;

    // Asks for the frame counters to be followed anew after the stream was restarted. Any thread.
    virtual void reset_and_resync_counters() = 0;

    virtual ~I_L1_Demux_ADC_Results() = default;

    // Offers the thirteen frames of a super frame at once: the 910 bytes as they came, whose start flag and
    // lane tags are as they should be. Who takes them answers true; otherwise they are published frame by
    // frame.
    virtual bool publish_super_frame(const unsigned char* /*bytes*/) { return false; }

    // Between these two calls deliveries follow each other without a wait; the receiver may put off until the
    // end what serves many at once. The calls come in pairs, deliveries also without them.
    virtual void burst_begins() {}

    virtual void burst_ends() {}

    // So many super frames of the stream will not come: they were lost behind the box. Who follows the frame
    // counter from one frame to the next finds out by itself.
    virtual void skip_super_frames(std::uint32_t /*count*/) {}
};

} // namespace Pelgar::ORBE::demux
