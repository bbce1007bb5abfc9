// Layer: façade. The C twins of the exported functions. Called on the host's threads; each blocks as its
// function does.
#include "NeuropixAPI_C.h"

#include <loguru.hpp>

// For the types in the tables' rows.
using namespace Neuropixels;

#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    result np_##name parameters {                                                                            \
        return Neuropixels::name arguments;                                                                  \
    }
#define NP_FUNCTION_OWN_TWIN(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments)
#include "NeuropixAPI_Functions.inc"

#define NP_LOGGED_TWIN(type, name, parameters, ...)                                                          \
    type name parameters {                                                                                   \
        VLOG_SCOPE_F(1, #name);                                                                              \
        VLOG_F(1, __VA_ARGS__);                                                                              \
        return static_cast<type>(SUCCESS);                                                                   \
    }
#include "api/NeuropixAPI_unused.inc"
