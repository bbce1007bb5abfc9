// The exported functions once more under plain names, for hosts that look them up by name (dlsym,
// GetProcAddress), and for C, Python and LabVIEW: every function of namespace Neuropixels has a C twin, at
// global scope, named np_ and the function's name. The twin takes the same parameters and calls the function:
//
//     extern "C" Neuropixels::NP_ErrorCode np_openBS(int slotID);
//
// A C compiler finds NeuropixAPI_plain.h here: the twins alone, with types of their own at global scope.
//
// Three things to know:
// - np_bs_get_fpga_design_label and np_bs_get_fpga_design_build_date write their text into a buffer of `len`
//   characters, closing zero included, and answer FAILED when it is empty: no basestation is open.
// - np_dbg_setlevel, np_getFlexVersion, np_getHSVersion, np_readFlexPN, np_readHSSN, np_readProbePN,
//   np_setEmissionSite, np_setHSLed and np_setOpticalCalibration call nothing: they are logged, write nothing
//   and return 0, the first of them nothing.
// - The global np_dbg_setlevel has the place of a twin of Neuropixels::dbg_setlevel, but logs the level as
//   Neuropixels::np_dbg_setlevel does, whose own twin is np_np_dbg_setlevel.
//
// A twin throws what its function throws: an exception is neither held back nor turned into a result. A host
// that is to catch it needs two things:
// - the compiler and the run time library that this library was built with; between different ones nothing is
//   caught, and the process ends;
// - a compiler that knows that functions with C linkage may throw: with MSVC the option /EHs (or /EHa) in the
//   place of /EHsc.
#pragma once

#ifndef __cplusplus

#include "NeuropixAPI_plain.h"

#else

#include "NeuropixAPI.h"

#define NP_FUNCTION(result, name, parameters, arguments)                                                     \
    extern "C" NP_EXPORT decltype(Neuropixels::name) np_##name;
#define NP_ADDITION(result, name, parameters, arguments) NP_FUNCTION(result, name, parameters, arguments)
#define NP_TEXT_ADDITION(result, name, parameters, arguments)                                                \
    extern "C" NP_EXPORT Neuropixels::NP_ErrorCode np_##name(char* text, size_t len);
#include "NeuropixAPI_Functions.inc"

#endif
