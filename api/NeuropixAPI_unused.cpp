// Layer: façade. Entry points of the published API that this box has no use for: each logs that it was called
// and does nothing else. Called on the host's threads; none blocks.
#include "NeuropixAPI.h"

#include <loguru.hpp>

namespace Neuropixels {

#define NP_LOGGED_ONLY(type, name, parameters, result, ...)                                                  \
    type name parameters {                                                                                   \
        VLOG_SCOPE_F(1, #name);                                                                              \
        VLOG_F(1, __VA_ARGS__);                                                                              \
        return static_cast<type>(result);                                                                    \
    }
#include "api/NeuropixAPI_unused.inc"

} // namespace Neuropixels
