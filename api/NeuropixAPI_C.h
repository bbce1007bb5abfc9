// The functions of the published API once more, for hosts that look them up by plain name (dlsym,
// GetProcAddress): every function of namespace Neuropixels but the box's own additions has a C twin, at
// global scope, named np_ and the function's name. The twin takes the same parameters and calls the function:
//
//     extern "C" Neuropixels::NP_ErrorCode np_openBS(int slotID);
//
// Two things to know:
// - np_dbg_setlevel, np_getFlexVersion, np_getHSVersion, np_readFlexPN, np_readHSSN, np_readProbePN,
//   np_setEmissionSite, np_setHSLed and np_setOpticalCalibration call nothing: they are logged, write nothing
//   and return 0, the first of them nothing.
// - The global np_dbg_setlevel has the place of a twin of Neuropixels::dbg_setlevel, but logs the level as
//   Neuropixels::np_dbg_setlevel does.
//
// A twin throws what its function throws: an exception is neither held back nor turned into a result. A host
// that is to catch it needs two things:
// - the compiler and the run time library that this library was built with; between different ones nothing is
//   caught, and the process ends;
// - a compiler that knows that functions with C linkage may throw: with MSVC the option /EHs (or /EHa) in the
//   place of /EHsc.
#pragma once

#include "NeuropixAPI.h"

#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    extern "C" NP_EXPORT decltype(Neuropixels::name) np_##name;
#define NP_ADDITION(result, name, parameters, arguments)
#include "NeuropixAPI_Functions.inc"
