// Layer: façade. The C twins of the exported functions. Called on the host's threads; each blocks as its
// function does.
#include "NeuropixAPI_C.h"

#include "common/Copy_Text.h"
#include "modes/Current_Mode.h"

#include <loguru.hpp>

#include <string>

// For the types in the tables' rows.
using namespace Neuropixels;
using Pelgar::ORBE::npoe_adapter::current_mode;

namespace {

// C has no std::string. No text of the box is empty, so that an empty one tells of a failure.
NP_ErrorCode hand_over(const std::string& whole, char* text, size_t len) {
    Pelgar::ORBE::copy_text(whole, text, len);
    return whole.empty() ? FAILED : SUCCESS;
}

} // namespace

#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    result np_##name parameters {                                                                            \
        return Neuropixels::name arguments;                                                                  \
    }
#define NP_FUNCTION_OWN_TWIN(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments) NP_FUNCTION(result, name, parameters, arguments)
#define NP_TEXT_ADDITION(result, name, parameters, arguments)                                                \
    NP_ErrorCode np_##name(char* text, size_t len) {                                                         \
        return hand_over(Neuropixels::name arguments, text, len);                                            \
    }
#include "NeuropixAPI_Functions.inc"

#define NP_LOGGED_TWIN_OF(name, parameters, arguments, ...)                                                  \
    NP_ErrorCode np_##name parameters {                                                                      \
        if (current_mode().twins_call_functions()) {                                                         \
            return Neuropixels::name arguments;                                                              \
        }                                                                                                    \
        VLOG_SCOPE_F(1, "np_" #name);                                                                        \
        VLOG_F(1, __VA_ARGS__);                                                                              \
        return SUCCESS;                                                                                      \
    }
#define NP_LOGGED_TWIN(type, name, parameters, ...)                                                          \
    type name parameters {                                                                                   \
        VLOG_SCOPE_F(1, #name);                                                                              \
        VLOG_F(1, __VA_ARGS__);                                                                              \
        return static_cast<type>(SUCCESS);                                                                   \
    }
#include "api/NeuropixAPI_unused.inc"
