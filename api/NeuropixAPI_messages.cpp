// Layer: façade. What the host may show to people: results, errors and the API version as texts. Called on
// the host's threads; none blocks.
#include "NeuropixAPI.h"

#include "adapter/Error_Text.h"
#include "adapter/Last_Error.h"
#include "common/Copy_Text.h"

#include <loguru.hpp>

namespace Neuropixels {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::npoe_adapter;

size_t getAPIVersionFull(char* text, size_t len) {
    VLOG_SCOPE_F(1, "getAPIVersionFull");
    VLOG_F(1, "getAPIVersionFull");
    return copy_text("1.0", text, len);
}

size_t getLastErrorMessage(char* text, size_t len) {
    VLOG_SCOPE_F(1, "getLastErrorMessage");
    VLOG_F(1, "getLastErrorMessage");
    keep_last_errors();
    return copy_text(last_error_of_this_thread(), text, len);
}

const char* getErrorMessage(NP_ErrorCode code) {
    VLOG_SCOPE_F(1, "getErrorMessage");
    VLOG_F(1, "getErrorMessage");
    return error_text(code);
}

} // namespace Neuropixels
