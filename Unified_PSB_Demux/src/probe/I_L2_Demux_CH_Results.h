// Layer: demultiplexer. Receives complete sets of channel values of one probe. Called on the NP worker thread
// of the port; an object that listens on several ports is called on several threads.
#pragma once

#include "common/Export.h"

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::demux {

// Recording channels of a probe.
inline constexpr std::size_t channel_count = 384;

class ORBE_EXPORT I_L2_Demux_CH_Results {
public:
    // One AP-band sample of every channel, 30,000 times a second. The receiver may change the values in place
    // before it passes them on; the array is valid for the call only.
    virtual void publish_ap_ch_data(std::uint16_t (&values)[channel_count]) = 0;

    // The same for the LFP band, 2,500 times a second.
    virtual void publish_lp_ch_data(std::uint16_t (&values)[channel_count]) = 0;

    virtual ~I_L2_Demux_CH_Results() = default;

    // Between these two calls deliveries follow each other without a wait; the receiver may put off until the
    // end what serves many at once. The calls come in pairs, deliveries also without them.
    virtual void burst_begins() {}

    virtual void burst_ends() {}
};

} // namespace Pelgar::ORBE::demux
