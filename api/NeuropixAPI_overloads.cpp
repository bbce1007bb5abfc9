// Layer: façade. Functions of the published API under a second type, because hosts of different lines import
// them under different ones. They stand in no header: a host that is compiled anew takes the first type.
// Called on the host's threads; none blocks.
#include "NeuropixAPI.h"

namespace Neuropixels {

NP_EXPORT NP_ErrorCode setSyncClockFrequency(int slotID, int frequency);

NP_ErrorCode setSyncClockFrequency(int slotID, int frequency) {
    return setSyncClockFrequency(slotID, static_cast<double>(frequency));
}

} // namespace Neuropixels
