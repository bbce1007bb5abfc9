// Layer: façade. The built-in self tests. Called on the host's threads; those of a port block while another
// operation on a probe runs, and for as long as the test takes. The one that pumps keeps acquisition from
// starting meanwhile.
#include "NeuropixAPI.h"

#include "adapter/Adapter_State.h"
#include "adapter/Pump_Thread.h"
#include "modes/Current_Mode.h"

#include <loguru.hpp>

#include <mutex>

namespace Neuropixels {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::npoe_adapter;

NP_ErrorCode bistBS(int /*slotID*/) {
    LOG_SCOPE_F(INFO, "bistBS");
    return Result_Answer("bistBS")(current_controller() ? SUCCESS : FAILED);
}

NP_ErrorCode bistEEPROM(int slotID, int portID) {
    LOG_SCOPE_F(INFO, "bistEEPROM");
    return forward_to_port("bistEEPROM", slotID, portID,
                           [&](auto& controller) { return controller.bist_Eeproms(port_index(portID)); });
}

NP_ErrorCode bistHB(int slotID, int portID, int /*dockID*/) {
    LOG_SCOPE_F(INFO, "bistHB");
    return forward_to_port("bistHB", slotID, portID,
                           [&](auto& controller) { return controller.bist_HB(port_index(portID)); });
}

NP_ErrorCode bistI2CMM(int slotID, int portID, int /*dockID*/) {
    LOG_SCOPE_F(INFO, "bistI2CMM");
    return forward_to_port("bistI2CMM", slotID, portID,
                           [&](auto& controller) { return controller.bist_IIC(port_index(portID)); });
}

NP_ErrorCode bistPSB(int slotID, int portID, int /*dockID*/) {
    LOG_SCOPE_F(INFO, "bistPSB");
    return forward_to_port("bistPSB", slotID, portID, [&](auto& controller) {
        // The stream has one pump: the test's, for as long as it runs, or that of an acquisition.
        const std::unique_lock stream(*g_stream_mutex, std::try_to_lock);
        if (!stream.owns_lock() || has_pump_thread()) {
            LOG_F(ERROR, "bistPSB needs the stream, which an acquisition uses");
            return false;
        }
        return controller.bist_PSB(port_index(portID));
    });
}

NP_ErrorCode bistSR(int slotID, int portID, int /*dockID*/) {
    LOG_SCOPE_F(INFO, "bistSR");
    return forward_to_port("bistSR", slotID, portID,
                           [&](auto& controller) { return controller.bist_Probe_SR(port_index(portID)); });
}

NP_ErrorCode bistStartPRBS(int slotID, int portID) {
    LOG_SCOPE_F(INFO, "bistStartPRBS");
    return forward_to_port("bistStartPRBS", slotID, portID,
                           [&](auto& controller) { return controller.bist_start_PBRS(port_index(portID)); });
}

NP_ErrorCode bistStopPRBS(int slotID, int portID, int* prbs_err) {
    LOG_SCOPE_F(INFO, "bistStopPRBS");
    int errors = 0;
    const auto result = forward_to_port("bistStopPRBS", slotID, portID, [&](auto& controller) {
        return controller.bist_stop_PBRS(port_index(portID), &errors);
    });
    write_to_host(prbs_err, errors);
    return result;
}

} // namespace Neuropixels
