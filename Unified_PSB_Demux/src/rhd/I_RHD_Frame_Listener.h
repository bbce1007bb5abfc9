// Layer: demultiplexer. Receives the frames of the Intan RHD stream. Called on the RHD worker thread.
#pragma once

#include "common/Export.h"
#include "rhd/RHD_Frame.h"

namespace Pelgar::ORBE::demux {

class ORBE_EXPORT I_RHD_Frame_Listener {
public:
    // One valid frame. It is the listener's for the call only.
    virtual void publish_rhd_frame(RHD_Frame& frame) = 0;

    virtual ~I_RHD_Frame_Listener() = default;

    // Between these two calls deliveries follow each other without a wait; the receiver may put off until the
    // end what serves many at once. The calls come in pairs, deliveries also without them.
    virtual void burst_begins() {}

    virtual void burst_ends() {}
};

} // namespace Pelgar::ORBE::demux
