#include "rhd/RHD_Frame_Null_listener.h"

namespace Pelgar::ORBE::demux {

void RHD_Frame_Null_listener::publish_rhd_frame(RHD_Frame&) {}

} // namespace Pelgar::ORBE::demux
