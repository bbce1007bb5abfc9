// Layer: façade. Devices, opening and closing the basestation. Called on the host's threads; openings and
// closings that overlap are made one after the other.
#include "NeuropixAPI.h"

#include "adapter/Adapter_State.h"
#include "adapter/File_Switch.h"
#include "adapter/Fork_Guard.h"
#include "adapter/Last_Error.h"
#include "adapter/Module_Pin.h"
#include "adapter/Pump_Thread.h"
#include "adapter/Raw_Capture_Switch.h"
#include "adapter/Raw_Data_File.h"
#include "host_mode/Mode_Choice.h"
#include "modes/Current_Mode.h"

#include <loguru.hpp>

#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace Neuropixels {

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::npoe_adapter;

constexpr const char* log_file = "ORBE.log";
constexpr int log_file_verbosity = 9;

constexpr NP_ErrorCode open_failed = VERSION_MISMATCH;

// Turns every blocked reader away and ends the pump, so that the controller can go.
void end_acquisition() {
    g_stop_requested = true;
    current_mode().turn_readers_away();
    end_pump_thread();
    // There is no pump any more, whoever started it: the next start_acquisition must start one.
    g_acquisition_running = false;
}

// Puts `controller` in the place of the one that is open, which is taken down with its box.
void exchange_controller(std::shared_ptr<ORBE_Controller_Library> controller) {
    {
        const std::lock_guard lock(*g_objects_mutex);
        g_controller->swap(controller);
    }
    controller.reset();
}

std::shared_ptr<ORBE_Controller_Library> make_controller(bool simulation) {
    if (*g_controller_factory) {
        return (*g_controller_factory)(simulation);
    }
    return std::make_shared<ORBE_Controller_Library>(simulation);
}

// As `make_controller`; when there is none to be made the open one goes all the same, for its readers have
// been turned away.
std::shared_ptr<ORBE_Controller_Library> make_controller_or_none(bool simulation) {
    try {
        return make_controller(simulation);
    } catch (...) {
        exchange_controller(nullptr);
        throw;
    }
}

// What a user does not see in the name of a recording that could not be opened.
void explain(const std::string& recording) {
    if (recording.empty()) {
        LOG_F(ERROR, "openBS : %s names no recording in its first line", simulation_switch);
    } else if (recording.front() == '"' || recording.front() == '\'') {
        LOG_F(ERROR, "openBS : %s names its recording in quotes, without which it must stand : %s",
              simulation_switch, recording.c_str());
    }
}

bool bring_up(ORBE_Controller_Library& controller, const std::optional<std::string>& capture) {
    if (!controller.open() || !controller.check_and_switch_firmware_if_nec(true) ||
        !controller.pre_init(true)) {
        return false;
    }
    if (capture && !start_capture("openBS", controller, *capture)) {
        return false;
    }
    g_stop_requested = false;
    current_mode().connect_streams(controller);
    if (controller.is_in_simulation_mode()) {
        const std::string recording = probe_file_switch(simulation_switch).first_line;
        const bool prepared = controller.prepare_for_simulation_streaming(recording);
        if (!prepared) {
            explain(recording);
        }
        return prepared;
    }
    controller.prepare_for_streaming();
    return true;
}

// Takes the open box down and brings up the one that `controller` leads to. Other threads have nothing to
// call until then; when it could not be brought up, or has thrown, they have what there is of it.
bool replace_controller(const std::shared_ptr<ORBE_Controller_Library>& controller,
                        const std::optional<std::string>& capture) {
    exchange_controller(nullptr);
    try {
        const bool is_up = bring_up(*controller, capture);
        exchange_controller(controller);
        return is_up;
    } catch (...) {
        exchange_controller(controller);
        throw;
    }
}

} // namespace

int getDeviceList(basestationID* list, int count) {
    LOG_SCOPE_F(INFO, "getDeviceList");
    LOG_F(INFO, "count : %d", count);
    keep_last_errors();
    if (g_log_file_pending.exchange(false)) {
        loguru::add_file(log_file, loguru::Truncate, log_file_verbosity);
    }
    if (!choose_mode_while_closed()) {
        return 0;
    }
    return current_mode().list_devices(list, count);
}

NP_ErrorCode getDeviceInfo(int slotID, basestationID* info) {
    LOG_SCOPE_F(INFO, "getDeviceInfo");
    LOG_F(INFO, "slotID : %d", slotID);
    const Result_Answer answer("getDeviceInfo");
    if (!choose_mode_while_closed()) {
        return answer(NO_SLOT);
    }
    return answer(current_mode().device_info(slotID, info));
}

bool tryGetSlotID(const basestationID* id, int* slotID) {
    VLOG_SCOPE_F(1, "tryGetSlotID");
    VLOG_F(1, "%d", 0);
    return choose_mode_while_closed() && current_mode().find_slot(id, slotID);
}

NP_ErrorCode openBS(int slotID) {
    LOG_SCOPE_F(INFO, "openBS");
    LOG_F(INFO, "slotID : %d", slotID);
    keep_last_errors();
    guard_forks();
    if (basestation_is_a_parents()) {
        // Opening would reset the box under the process that streams from it.
        LOG_F(ERROR, "openBS : %s", why_there_is_no_basestation());
        return open_failed;
    }
    const std::lock_guard opening(*g_opening_mutex);
    if (current_controller()) {
        LOG_F(INFO, "Warning re initalizing library. slotID : %d", slotID);
    }
    const Result_Answer answer("openBS");
    if (!choose_mode()) {
        return answer(open_failed);
    }
    if (const auto answered = current_mode().answer_opening(slotID)) {
        return answer(*answered);
    }
    const File_Switch simulation = probe_file_switch(simulation_switch);
    const auto capture = read_raw_capture_switch();
    if (capture && !may_capture("openBS", *capture, simulation)) {
        return answer(open_failed);
    }
    pin_own_module();
    keep_raw_data_file(simulation);
    try {
        end_acquisition();
        if (!replace_controller(make_controller_or_none(simulation.present), capture)) {
            return answer(open_failed);
        }
    } catch (const std::runtime_error& exception) {
        LOG_F(ERROR, "openBS : %s", exception.what());
        return answer(open_failed);
    }
    current_mode().opened();
    LOG_F(INFO, "Converter data structures prepared (%d)", slotID);
    return SUCCESS;
}

NP_ErrorCode closeBS(int slotID) {
    LOG_SCOPE_F(INFO, "closeBS");
    LOG_F(INFO, "SlotID : %d", slotID);
    const std::lock_guard opening(*g_opening_mutex);
    if (!current_mode().leave(slotID)) {
        return SUCCESS;
    }
    if (current_controller()) {
        disable_streaming("closeBS");
    }
    end_acquisition();
    exchange_controller(nullptr);
    return SUCCESS;
}

NP_ErrorCode detectHeadStage(int slotID, int portID, bool* detected) {
    LOG_SCOPE_F(INFO, "detectHeadStage");
    LOG_F(INFO, "slotID : %d, portID : %d", slotID, portID);
    const Result_Answer answer("detectHeadStage");
    bool present = false;
    const auto result = forward_to_controller("detectHeadStage", [&](auto& controller) {
        present = current_mode().detect_headstage(controller, slotID, portID);
        return true;
    });
    write_to_host(detected, present);
    return answer(result);
}

NP_ErrorCode arm(int slotID) {
    LOG_SCOPE_F(INFO, "arm");
    LOG_F(INFO, "slotID : %d", slotID);
    const Result_Answer answer("arm");
    return answer(current_mode().arm(slotID));
}

} // namespace Neuropixels
