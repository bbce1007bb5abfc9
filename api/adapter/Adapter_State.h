// Layer: façade. The process-wide state behind the exported functions: the one controller, the converters of
// its four ports and of the RHD stream, and the pump thread. The host's threads share it; the lock is held
// only to copy or exchange pointers.
#pragma once

#include "NeuropixAPI.h"
#include "adapter/Last_Error.h"
#include "common/Never_Destroyed.h"
#include "common/Relaxed.h"
#include "controller/C_ORBE_Controller_Library.h"
#include "packets/L2_CH_Results_NP_PXI_Format_Converter.h"
#include "packets/RHD_to_PXI_ADC_Format_Converter.h"

#include <loguru.hpp>

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace Pelgar::ORBE::npoe_adapter {

inline constexpr std::size_t np_port_count = demux::np_port_count;

using NP_Converter = L2_CH_Results_NP_PXI_Format_Converter;
using RHD_Converter = RHD_to_PXI_ADC_Format_Converter;

// Held while a basestation is opened or closed, and while the way of presenting the box is chosen: one after
// the other. Taken before every other lock.
extern Never_Destroyed<std::mutex> g_opening_mutex;

// Guards the three pointers below it. openBS and closeBS, which alone change them, may read them without.
extern Never_Destroyed<std::mutex> g_objects_mutex;
extern Never_Destroyed<std::shared_ptr<ORBE_Controller_Library>> g_controller;
extern Never_Destroyed<std::array<std::shared_ptr<NP_Converter>, np_port_count>> g_np_converters;
extern Never_Destroyed<std::shared_ptr<RHD_Converter>> g_rhd_converter;

// Held by every operation on a probe or its link: all ports share one UART, whose answers carry no tag.
extern Never_Destroyed<std::mutex> g_i2c_mutex;

// Whose the stream is: held while acquisition is started or stopped, and by a self test that pumps, for as
// long as it runs. Taken after the lock above, where both are. closeBS does without it, so that nothing keeps
// a basestation from being closed.
extern Never_Destroyed<std::mutex> g_stream_mutex;

// Held while the pump's thread is made and until it has been joined. Taken after the locks above.
extern Never_Destroyed<std::mutex> g_pump_mutex;
// There from the start of an acquisition until its pump has been joined.
extern Never_Destroyed<std::unique_ptr<std::thread>> g_pump_thread;
extern std::atomic<bool> g_acquisition_running;
extern Relaxed<bool> g_stop_requested;
extern Relaxed<bool> g_pump_ended;
// The pump has ended by itself: a failed read, or the end of a recording.
extern Relaxed<bool> g_pump_broke_off;
extern std::atomic<bool> g_log_file_pending;

// How openBS makes its controller; tests put one on a modelled box in its place.
using Controller_Factory = std::function<std::shared_ptr<ORBE_Controller_Library>(bool simulation)>;
extern Never_Destroyed<Controller_Factory> g_controller_factory;

// The controller's index of an API port. What is no port becomes an index that nothing has.
inline unsigned port_index(int portID) {
    return static_cast<unsigned>(portID) - 1U;
}

// The controller, or empty when no basestation is open.
std::shared_ptr<ORBE_Controller_Library> current_controller();

// The port's converter, or empty when no basestation is open. Throws std::out_of_range("invalid array<T, N>
// subscript") for a port outside 1..4.
std::shared_ptr<NP_Converter> current_np_converter(int portID);
std::shared_ptr<RHD_Converter> current_rhd_converter();

// Says why `current_controller` is empty, for people.
const char* why_there_is_no_basestation();

// Carries out `operation` (controller -> bool) for the entry point `name`. No open basestation and a
// std::runtime_error from below are logged and answered as failures. What openBS has left behind when there
// was no box answers as well, up to where it would use a register.
template <typename Operation>
Neuropixels::NP_ErrorCode forward_to_controller(const char* name, Operation operation) {
    keep_last_errors();
    const auto controller = current_controller();
    if (!controller) {
        LOG_F(ERROR, "%s : %s", name, why_there_is_no_basestation());
        return Neuropixels::FAILED;
    }
    try {
        return operation(*controller) ? Neuropixels::SUCCESS : Neuropixels::FAILED;
    } catch (const std::runtime_error& exception) {
        LOG_F(ERROR, "%s : %s", name, exception.what());
        return Neuropixels::FAILED;
    }
}

// As `forward_to_controller`, for an operation on a probe or its link. Blocks while another one runs.
template <typename Operation>
Neuropixels::NP_ErrorCode forward_over_i2c(const char* name, Operation operation) {
    const std::lock_guard lock(*g_i2c_mutex);
    return forward_to_controller(name, operation);
}

// What an output pointer of the host, which may be null, leads to before the call.
template <typename T>
T read_from_host(const T* source) {
    return source == nullptr ? T{} : *source;
}

// Writes through an output pointer of the host, which may be null.
template <typename T>
void write_to_host(T* destination, T value) {
    if (destination != nullptr) {
        *destination = value;
    }
}

} // namespace Pelgar::ORBE::npoe_adapter
