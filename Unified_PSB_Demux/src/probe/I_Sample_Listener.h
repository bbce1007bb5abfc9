// Layer: demultiplexer. Told which sample comes next, beside the listener that takes its values: the probe's
// own count of it. Called on the NP worker thread of the port.
#pragma once

#include "common/Export.h"

#include <cstdint>

namespace Pelgar::ORBE::demux {

struct Sample_Position {
    // The super frames that the probe has sent before this one, lost ones included.
    std::uint64_t super_frame;
    // Whether it is the first of the twelve super frames that share one LFP sample.
    bool begins_lfp_sample;
};

class ORBE_EXPORT I_Sample_Listener {
public:
    // The next AP values that this port publishes are those of `position`. An LFP sample that is complete
    // with this super frame has been published before.
    virtual void begin_sample(const Sample_Position& position) = 0;

    virtual ~I_Sample_Listener() = default;
};

} // namespace Pelgar::ORBE::demux
