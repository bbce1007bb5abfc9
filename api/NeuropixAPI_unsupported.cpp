// Layer: façade. Functions of the published API that this box does not carry out. They are there so that a
// host that imports them starts: each logs its name and writes nothing that a host could take for an answer.
// Called on the host's threads; none blocks.
#include "NeuropixAPI.h"

#include "common/Copy_Text.h"
#include "host_mode/Mode_Choice.h"
#include "modes/Current_Mode.h"

#include <loguru.hpp>

namespace Neuropixels {

namespace {

using Pelgar::ORBE::npoe_adapter::current_mode;
using Pelgar::ORBE::npoe_adapter::Result_Answer;

template <typename... Arguments>
void leave_alone(const Arguments&... /*unused*/) {}

} // namespace

// Those that answer a result: NOTSUPPORTED.
#define NP_FUNCTION(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments)
#define NP_UNSUPPORTED(result, name, parameters, arguments)                                                  \
    result name parameters {                                                                                 \
        VLOG_SCOPE_F(1, #name);                                                                              \
        VLOG_F(1, #name);                                                                                    \
        leave_alone arguments;                                                                               \
        return Result_Answer(#name)(NOTSUPPORTED);                                                           \
    }
#define NP_UNSUPPORTED_BY_MODE(result, name, parameters, arguments)                                          \
    result name parameters {                                                                                 \
        Pelgar::ORBE::npoe_adapter::choose_mode_while_closed();                                              \
        const int verbosity = current_mode().log_verbosity(#name);                                           \
        VLOG_SCOPE_F(verbosity, #name);                                                                      \
        VLOG_F(verbosity, #name);                                                                            \
        const Result_Answer answer(#name);                                                                   \
        return answer(current_mode().name arguments);                                                        \
    }
#define NP_UNSUPPORTED_OWN_TWIN(result, name, parameters, arguments)                                         \
    NP_UNSUPPORTED(result, name, parameters, arguments)
#include "NeuropixAPI_Functions.inc"

// And those that have none to answer.

uint64_t streamTell(np_streamhandle_t /*handle*/) {
    VLOG_SCOPE_F(1, "streamTell");
    VLOG_F(1, "streamTell");
    return 0;
}

void dbg_setlevel(int /*level*/) {
    VLOG_SCOPE_F(1, "dbg_setlevel");
    VLOG_F(1, "dbg_setlevel");
}

int dbg_getlevel() {
    VLOG_SCOPE_F(1, "dbg_getlevel");
    VLOG_F(1, "dbg_getlevel");
    return 0;
}

void dbg_setlogcallback(int /*minlevel*/,
                        void (* /*callback*/)(int level, time_t ts, const char* module, const char* msg)) {
    VLOG_SCOPE_F(1, "dbg_setlogcallback");
    VLOG_F(1, "dbg_setlogcallback");
}

void dbg_getversion_datetime(char* text, size_t len) {
    VLOG_SCOPE_F(1, "dbg_getversion_datetime");
    VLOG_F(1, "dbg_getversion_datetime");
    Pelgar::ORBE::copy_text("", text, len);
}

} // namespace Neuropixels
