#include "probe/CP_L2_CH_Results_Null_Writer.h"

namespace Pelgar::ORBE::demux {

void CP_L2_CH_Results_Null_Writer::publish_ap_ch_data(std::uint16_t (&)[channel_count]) {}

void CP_L2_CH_Results_Null_Writer::publish_lp_ch_data(std::uint16_t (&)[channel_count]) {}

} // namespace Pelgar::ORBE::demux
