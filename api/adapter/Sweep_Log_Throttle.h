// Layer: façade. Keeps the log readable while a host sweeps over all channels: only the first call of a run
// of rising channels is logged. Called on the host's threads; never blocks.
#pragma once

#include "common/Relaxed.h"

namespace Pelgar::ORBE::npoe_adapter {

class Sweep_Log_Throttle {
public:
    // The verbosity at which the call for this channel logs: 0, or, when the channel follows the one before,
    // a verbosity that nothing listens to.
    int verbosity_for(int channel);

private:
    Relaxed<int> m_last_channel{-2};
};

} // namespace Pelgar::ORBE::npoe_adapter
