// Stands in for NeuropixAPI_C.h: each function of the plain header under the name that it has in C++, and at
// global scope under its own.
#pragma once

#include "NeuropixAPI.h"

#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    namespace Neuropixels {                                                                                  \
    decltype(np_##name) name;                                                                                \
    }                                                                                                        \
    using Neuropixels::np_##name;
#define NP_ADDITION(result, name, parameters, arguments)
#include <NeuropixAPI_Functions.inc>
