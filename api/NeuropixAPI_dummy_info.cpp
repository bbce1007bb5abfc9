// Layer: façade. Questions that this box answers with fixed values. Called on the host's threads; none
// blocks.
#include "NeuropixAPI.h"

#include "Adapter_State.h"

#include <loguru.hpp>

namespace Neuropixels {

using Pelgar::ORBE::npoe_adapter::write_to_host;

void getAPIVersion(int* version_major, int* version_minor) {
    VLOG_SCOPE_F(1, "getAPIVersion");
    VLOG_F(1, "%d", 1);
    write_to_host(version_major, 1);
    write_to_host(version_minor, 0);
}

} // namespace Neuropixels
