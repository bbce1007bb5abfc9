// Layer: demultiplexer. Takes channel values and does nothing with them, for ports that nobody listens to.
// Called on the NP worker threads; never blocks.
#pragma once

#include "common/Export.h"
#include "probe/I_L2_Demux_CH_Results.h"

#include <cstdint>

namespace Pelgar::ORBE::demux {

class ORBE_EXPORT CP_L2_CH_Results_Null_Writer : public I_L2_Demux_CH_Results {
public:
    void publish_ap_ch_data(std::uint16_t (&values)[channel_count]) override;
    void publish_lp_ch_data(std::uint16_t (&values)[channel_count]) override;
};

} // namespace Pelgar::ORBE::demux
