// Layer: façade. Entry points of the published API that this box has no use for: each logs that it was called
// and does nothing else, but for those that the mode carries out. Called on the host's threads; none blocks.
#include "NeuropixAPI.h"

#include "host_mode/Mode_Choice.h"
#include "modes/Current_Mode.h"

#include <loguru.hpp>

namespace Neuropixels {

using namespace Pelgar::ORBE::npoe_adapter;

#define NP_LOGGED_ONLY(type, name, parameters, result, ...)                                                  \
    type name parameters {                                                                                   \
        VLOG_SCOPE_F(1, #name);                                                                              \
        VLOG_F(1, __VA_ARGS__);                                                                              \
        return static_cast<type>(Result_Answer(#name)(result));                                              \
    }
#define NP_LOGGED_BY_MODE(type, name, parameters, arguments, result, ...)                                    \
    type name parameters {                                                                                   \
        VLOG_SCOPE_F(1, #name);                                                                              \
        VLOG_F(1, __VA_ARGS__);                                                                              \
        choose_mode_while_closed();                                                                          \
        const Result_Answer answer(#name);                                                                   \
        return answer(current_mode().name arguments);                                                        \
    }
#include "api/NeuropixAPI_unused.inc"

} // namespace Neuropixels
