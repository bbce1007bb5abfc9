// Layer: façade. Questions that this box answers with fixed values. Called on the host's threads; none
// blocks.
#include "NeuropixAPI.h"

#include "adapter/Adapter_State.h"
#include "common/Copy_Text.h"
#include "host_mode/Mode_Choice.h"
#include "modes/Current_Mode.h"

#include <loguru.hpp>

namespace Neuropixels {

namespace {

using Pelgar::ORBE::copy_text;
using Pelgar::ORBE::npoe_adapter::current_mode;
using Pelgar::ORBE::npoe_adapter::Result_Answer;
using Pelgar::ORBE::npoe_adapter::write_to_host;

void write_version(int* version_major, int* version_minor) {
    write_to_host(version_major, 1);
    write_to_host(version_minor, 0);
}

// Version 2.0.1 of what `name` says.
void write_firmware_info(firmware_Info* info, const char* name) {
    if (info != nullptr) {
        info->major = 2;
        info->minor = 0;
        info->build = 1;
        copy_text(name, info->name, sizeof info->name);
    }
}

} // namespace

#define NP_FIXED_ANSWER(type, name, parameters, written, ...)                                                \
    type name parameters {                                                                                   \
        VLOG_SCOPE_F(1, #name);                                                                              \
        VLOG_F(1, __VA_ARGS__);                                                                              \
        static_cast<void>(written);                                                                          \
        return static_cast<type>(SUCCESS);                                                                   \
    }
#define NP_FIXED_BY_MODE(type, name, parameters, arguments, written, ...)                                    \
    type name parameters {                                                                                   \
        VLOG_SCOPE_F(1, #name);                                                                              \
        VLOG_F(1, __VA_ARGS__);                                                                              \
        static_cast<void>(written);                                                                          \
        Pelgar::ORBE::npoe_adapter::choose_mode_while_closed();                                              \
        const Result_Answer answer(#name);                                                                   \
        return answer(current_mode().name arguments);                                                        \
    }
#include "api/NeuropixAPI_dummy_info.inc"

} // namespace Neuropixels
