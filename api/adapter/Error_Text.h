// Layer: façade. What each result of the API means, in a few words. Any thread; nothing blocks.
#pragma once

#include "NeuropixAPI.h"

namespace Pelgar::ORBE::npoe_adapter {

// Never null; "unknown error code" for a number that is no result of the API.
const char* error_text(Neuropixels::NP_ErrorCode code);

} // namespace Pelgar::ORBE::npoe_adapter
