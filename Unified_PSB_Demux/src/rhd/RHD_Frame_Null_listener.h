// Layer: demultiplexer. Takes RHD frames and does nothing with them, for boxes whose RHD stream nobody
// listens to. Called on the RHD worker thread; never blocks.
#pragma once

#include "common/Export.h"
#include "rhd/I_RHD_Frame_Listener.h"

namespace Pelgar::ORBE::demux {

class ORBE_EXPORT RHD_Frame_Null_listener : public I_RHD_Frame_Listener {
public:
    void publish_rhd_frame(RHD_Frame& frame) override;
};

} // namespace Pelgar::ORBE::demux
