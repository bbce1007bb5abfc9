#include "adapter/Adapter_State.h"

#include "adapter/Fork_Guard.h"
#include "common/Checked_Index.h"

namespace Pelgar::ORBE::npoe_adapter {

Never_Destroyed<std::mutex> g_opening_mutex;
Never_Destroyed<std::mutex> g_objects_mutex;
Never_Destroyed<std::shared_ptr<ORBE_Controller_Library>> g_controller;
Never_Destroyed<std::array<std::shared_ptr<NP_Converter>, np_port_count>> g_np_converters;
Never_Destroyed<std::shared_ptr<RHD_Converter>> g_rhd_converter;

Never_Destroyed<std::mutex> g_i2c_mutex;

Never_Destroyed<std::mutex> g_stream_mutex;
Never_Destroyed<std::mutex> g_pump_mutex;
Never_Destroyed<std::unique_ptr<std::thread>> g_pump_thread;
std::atomic<bool> g_acquisition_running{false};
Relaxed<bool> g_stop_requested{false};
Relaxed<bool> g_pump_ended{false};
Relaxed<bool> g_pump_broke_off{false};
std::atomic<bool> g_log_file_pending{true};

Never_Destroyed<Controller_Factory> g_controller_factory;

std::shared_ptr<ORBE_Controller_Library> current_controller() {
    const std::lock_guard lock(*g_objects_mutex);
    return *g_controller;
}

const char* why_there_is_no_basestation() {
    return basestation_is_a_parents() ? "the basestation is open in the process that this one was forked from"
                                      : "no basestation is open";
}

std::shared_ptr<NP_Converter> current_np_converter(int portID) {
    const std::lock_guard lock(*g_objects_mutex);
    const auto& converter = checked_at(*g_np_converters, port_index(portID));
    return *g_controller ? converter : nullptr;
}

std::shared_ptr<RHD_Converter> current_rhd_converter() {
    const std::lock_guard lock(*g_objects_mutex);
    return *g_controller ? *g_rhd_converter : nullptr;
}

} // namespace Pelgar::ORBE::npoe_adapter
