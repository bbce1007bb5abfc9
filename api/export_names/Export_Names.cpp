// The addresses of all exported functions and of their C twins, each in the order of the list. It belongs to
// no program: cmake/Export_Names.cmake compiles it twice, for the compiler that builds the Windows DLL and
// for the one that hosts are built with, and reads from the two objects what the same function is called by
// either. Where no headers of the hosts' compiler exist, the few in msvc/ stand in for them: names follow
// from types, and these have the same.
#include "NeuropixAPI_C.h"

using Any_Function = void (*)();

extern const Any_Function np_exports[];

const Any_Function np_exports[] = {
#define NP_FUNCTION(result, name, parameters, arguments) reinterpret_cast<Any_Function>(&Neuropixels::name),
#define NP_ADDITION(result, name, parameters, arguments) reinterpret_cast<Any_Function>(&Neuropixels::name),
#include "NeuropixAPI_Functions.inc"
#define NP_FUNCTION(result, name, parameters, arguments) reinterpret_cast<Any_Function>(&::np_##name),
#define NP_ADDITION(result, name, parameters, arguments) reinterpret_cast<Any_Function>(&::np_##name),
#include "NeuropixAPI_Functions.inc"
};
