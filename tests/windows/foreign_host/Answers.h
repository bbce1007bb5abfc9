// A host in the ABI of Windows' main compiler. What each exported function answers while no basestation is
// open: a constant of the function's name.
#pragma once

#include <NeuropixAPI.h>

namespace Pelgar::ORBE::host {

struct Answer {
    long long result; // 0 for a function that returns nothing; of a text, whether there is one
    bool may_write;
};

// In place of the result: the function is not to be called.
inline constexpr long long not_called = -1;

// From the kind of the function's row in the list.
namespace answers {

using namespace Neuropixels;

inline constexpr Answer logged_only{SUCCESS, false};
inline constexpr Answer carried_out{SUCCESS, true};
inline constexpr Answer no_basestation{FAILED, true};
inline constexpr Answer not_supported{NOTSUPPORTED, false};

#define NP_FUNCTION(result, name, parameters, arguments) inline constexpr Answer name = no_basestation;
#define NP_UNSUPPORTED(result, name, parameters, arguments) inline constexpr Answer name = not_supported;
#define NP_UNSUPPORTED_OWN_TWIN(result, name, parameters, arguments)                                         \
    inline constexpr Answer name = not_supported;
#define NP_ADDITION(result, name, parameters, arguments) inline constexpr Answer name = no_basestation;
#include <NeuropixAPI_Functions.inc>

// What is known of single functions. Whoever names a function in here finds this first.
namespace of_functions {

#define NP_LOGGED_ONLY(type, name, parameters, result, ...) inline constexpr Answer name{result, false};
#include <NeuropixAPI_unused.inc>
#define NP_FIXED_ANSWER(type, name, parameters, what_is_written, ...)                                        \
    inline constexpr Answer name = carried_out;
#include <NeuropixAPI_dummy_info.inc>

inline constexpr Answer arm = logged_only;
inline constexpr Answer closeBS = logged_only;
inline constexpr Answer closePort = logged_only;
inline constexpr Answer closeProbe = logged_only;
inline constexpr Answer dbg_getlevel = logged_only;
inline constexpr Answer dbg_setlevel = logged_only;
inline constexpr Answer dbg_setlogcallback = logged_only;
inline constexpr Answer openProbe = logged_only;
inline constexpr Answer setOPMODE = logged_only;
inline constexpr Answer start_acquisition = logged_only;
inline constexpr Answer stop_acquisition = logged_only;
inline constexpr Answer streamTell = logged_only;

inline constexpr Answer ADC_readPackets = carried_out;
inline constexpr Answer dbg_getversion_datetime = carried_out;
inline constexpr Answer getDeviceInfo = carried_out;
inline constexpr Answer getElectrodeDataFifoState = carried_out;
inline constexpr Answer readElectrodeData = carried_out;

// Looks for a box, which is what the runs are for.
inline constexpr Answer openBS{not_called, false};

// Those that do not answer a result code: the number of boxes, whether there is one, whether there is a text,
// and the lengths of texts.
inline constexpr Answer getDeviceList{1, true};
inline constexpr Answer tryGetSlotID{1, true};
inline constexpr Answer getErrorMessage{1, false};
inline constexpr Answer getAPIVersionFull{3, true};
inline constexpr Answer getLastErrorMessage{0, true};

} // namespace of_functions
} // namespace answers
} // namespace Pelgar::ORBE::host
