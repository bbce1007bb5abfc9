#include "adapter/Pump_Thread.h"

#include "adapter/Adapter_State.h"
#include "adapter/Thread_Priority.h"

#include <exception>
#include <mutex>
#include <utility>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

bool pump_once(ORBE_Controller_Library& controller) {
    try {
        return controller.pump_data_to_demux();
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "main pump thread : %s", exception.what());
        return false;
    }
}

void pump_until_told(const std::shared_ptr<ORBE_Controller_Library>& controller, int slotID, int portID) {
    VLOG_F(1, "slotID %d, portID %d : Main pump thread started", slotID, portID);
    raise_own_thread_priority();
    while (!g_stop_requested) {
        if (!pump_once(*controller)) {
            // The "ended" flag stays clear: stop_acquisition tells a stopped pump from one that broke off.
            LOG_F(INFO, "error in main pump thread (%d,%d)", slotID, portID);
            g_pump_broke_off = true;
            return;
        }
    }
    g_pump_ended = true;
    LOG_F(INFO, "End of main pump thread (%d,%d)", slotID, portID);
}

void run_pump(const std::shared_ptr<ORBE_Controller_Library>& controller, int slotID, int portID) {
    controller->begin_raw_capture();
    pump_until_told(controller, slotID, portID);
    controller->end_raw_capture();
}

void join_and_forget() {
    if (*g_pump_thread) {
        (*g_pump_thread)->join();
        g_pump_thread->reset();
    }
}

} // namespace

void start_pump_thread(std::shared_ptr<ORBE_Controller_Library> controller, int slotID, int portID) {
    const std::lock_guard lock(*g_pump_mutex);
    g_pump_broke_off = false;
    g_pump_ended = false;
    g_stop_requested = false;
    *g_pump_thread = std::make_unique<std::thread>(run_pump, std::move(controller), slotID, portID);
}

void disable_streaming(const char* name) {
    forward_to_controller(name, [](auto& controller) {
        controller.disable_streaming();
        return true;
    });
}

void join_pump_thread() {
    const std::lock_guard lock(*g_pump_mutex);
    join_and_forget();
}

void end_pump_thread() {
    const std::lock_guard lock(*g_pump_mutex);
    // Here and not before: a thread that starts a pump clears it.
    g_stop_requested = true;
    join_and_forget();
}

bool has_pump_thread() {
    const std::lock_guard lock(*g_pump_mutex);
    return *g_pump_thread != nullptr;
}

} // namespace Pelgar::ORBE::npoe_adapter
