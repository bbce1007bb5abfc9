// Tools, recording library. Fills electrode packets sample by sample: rows of AP samples one after the other,
// and an LFP sample closes the packet. Rows that were not written since the last packet keep what they held.
#pragma once

#include "expectation/Channel_Sorter.h"

#include <NeuropixAPI.h>

namespace Pelgar::ORBE::recording {

class Packet_Filler {
public:
    void add_ap(const Channel_Values& values);

    // The packet that this sample closes, valid until the next call.
    const Neuropixels::electrodePacket& add_lfp(const Channel_Values& values);

private:
    Neuropixels::electrodePacket m_packet{};
    std::size_t m_row = 0;
    // Seconds of AP samples in single precision, as time stamps are derived from them: it drifts, and it
    // stops at 1024, where another sample period no longer changes the sum.
    float m_time = 0.0F;
};

} // namespace Pelgar::ORBE::recording
