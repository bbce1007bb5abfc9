#include "modes/Box_Mode.h"

#include "adapter/Adapter_State.h"
#include "adapter/Pump_Thread.h"
#include "adapter/Throughput_Report.h"
#include "common/Waiting.h"

#include <loguru.hpp>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <system_error>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// The one device: a box of its own kind behind the number 1.
constexpr basestationID the_basestation{NPPlatform_USB, 1};

constexpr auto pump_end_poll_wait = std::chrono::milliseconds(1000);

using Stream_Lock = std::unique_lock<std::mutex>;

// Waits for the pump to get on. Without the stream: a pump that broke off never ends, but the basestation may
// be closed, opened and started meanwhile.
void wait_for_pump(Stream_Lock& stream) {
    stream.unlock();
    wait_for(pump_end_poll_wait);
    stream.lock();
}

std::int64_t steady_clock_ns() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

// Copies packets to the host until `requested` are copied or the reader is turned away; answers their number.
int take_packets(NP_Converter& converter, electrodePacket* packets, int requested) {
    const std::lock_guard lock(converter.reader_mutex());
    MT_NP_PXI_Queue& queue = converter.queue();
    for (int i = 0; i < requested; ++i) {
        const electrodePacket* front = queue.peek_xfer_buffer_from_queue(packets_wanted(requested, i));
        if (packets != nullptr) {
            packets[i] = *front;
        }
        if (queue.signalled_for_exit() || g_stop_requested) {
            return i;
        }
        queue.pop();
    }
    return requested;
}

template <typename... Arguments>
void leave_alone(const Arguments&... /*unused*/) {}

} // namespace

int Box_Mode::list_devices(basestationID* list, int count) {
    if (list != nullptr && count > 0) {
        list[0] = the_basestation;
    }
    return 1;
}

NP_ErrorCode Box_Mode::device_info(int /*slotID*/, basestationID* info) {
    write_to_host(info, the_basestation);
    return SUCCESS;
}

bool Box_Mode::find_slot(const basestationID* /*id*/, int* slotID) {
    write_to_host(slotID, 0);
    return true;
}

void Box_Mode::connect_streams(ORBE_Controller_Library& controller) {
    for (unsigned port = 0; port < np_port_count; ++port) {
        auto converter = std::make_shared<NP_Converter>();
        controller.set_NP_aqustion_listener(converter, port, true);
        const std::lock_guard lock(*g_objects_mutex);
        (*g_np_converters)[port].swap(converter);
    }
    auto converter = std::make_shared<RHD_Converter>();
    controller.set_RHD_aqustion_listener(converter);
    const std::lock_guard lock(*g_objects_mutex);
    g_rhd_converter->swap(converter);
}

void Box_Mode::turn_readers_away() {
    for (const auto& converter : *g_np_converters) {
        if (converter) {
            converter->queue().signal_exit();
        }
    }
    if (*g_rhd_converter) {
        (*g_rhd_converter)->queue().signal_exit();
    }
}

NP_ErrorCode Box_Mode::start(int slotID, int portID) {
    // A self test that pumps is waited for.
    const Stream_Lock stream(*g_stream_mutex);
    bool running = false;
    if (!g_acquisition_running.compare_exchange_strong(running, true)) {
        return SUCCESS;
    }
    const auto controller = current_controller();
    const auto enabled = forward_to_controller("start_acquisition", [](auto& box) {
        box.enable_streaming(true, {0, 1, 2, 3}, true, {}, true);
        return true;
    });
    if (enabled != SUCCESS || !controller) {
        g_acquisition_running = false;
        return SUCCESS;
    }
    try {
        start_pump_thread(controller, slotID, portID);
    } catch (const std::system_error&) {
        disable_streaming("start_acquisition");
        g_acquisition_running = false;
        throw;
    }
    return SUCCESS;
}

NP_ErrorCode Box_Mode::stop(int slotID, int /*portID*/) {
    Stream_Lock stream(*g_stream_mutex);
    bool running = true;
    if (!g_acquisition_running.compare_exchange_strong(running, false)) {
        return SUCCESS;
    }
    LOG_F(INFO, "Stopping main stream. (%d)", slotID);
    disable_streaming("stop_acquisition");
    g_stop_requested = true;
    while (!g_pump_ended) {
        LOG_F(INFO, "Waiting main pump to stop. (%d)", slotID);
        wait_for_pump(stream);
    }
    join_pump_thread();
    return SUCCESS;
}

NP_ErrorCode Box_Mode::read_electrode_data(int /*slotID*/, int portID, electrodePacket* packets,
                                           int* actualAmount, int requestedAmount) {
    int copied = 0;
    const bool is_port = portID >= 1 && portID <= static_cast<int>(np_port_count);
    if (is_port || requestedAmount != 0) {
        if (const auto converter = current_np_converter(portID)) {
            const int requested = std::max(requestedAmount, 0);
            copied = take_packets(*converter, packets, requested);
            if (copied == requested) {
                report_throughput(port_index(portID), requested, steady_clock_ns());
            }
        }
    }
    write_to_host(actualAmount, copied);
    return SUCCESS;
}

NP_ErrorCode Box_Mode::electrode_fifo_state(int /*slotID*/, int portID, int* packetsAvailable,
                                            int* headroom) {
    const auto converter = current_np_converter(portID);
    const int available = converter ? static_cast<int>(converter->queue().size()) : 0;
    write_to_host(packetsAvailable, available);
    write_to_host(headroom, static_cast<int>(packet_queue_limit) - available);
    return SUCCESS;
}

NP_ErrorCode Box_Mode::read_adc_packets(int /*slotID*/, PacketInfo* packetInfo, int16_t* data,
                                        int /*channelCount*/, int packetCount, int* packetsRead) {
    const auto converter = current_rhd_converter();
    int taken = 0;
    if (converter) {
        const int requested = std::max(packetCount, 0);
        const std::lock_guard lock(converter->reader_mutex());
        for (; taken < requested; ++taken) {
            uint16_t* status = nullptr;
            if (packetInfo != nullptr) {
                packetInfo[taken].Timestamp = 0;
                packetInfo[taken].payloadlength = 0;
                status = &packetInfo[taken].Status;
            }
            int16_t* const samples =
                data == nullptr ? nullptr : data + taken * std::ptrdiff_t{adc_packet_length};
            converter->read_sample_packet_to_buffer(samples, status, packets_wanted(requested, taken));
            if (converter->queue().signalled_for_exit() || g_stop_requested) {
                // Nothing of what was copied so far is for the host to use.
                taken = 0;
                break;
            }
        }
    }
    write_to_host(packetsRead, taken);
    return SUCCESS;
}

bool Box_Mode::detect_headstage(ORBE_Controller_Library& controller, int /*slotID*/, int portID) {
    const unsigned status = controller.get_cached_np_port_status();
    const unsigned offered =
        std::min<unsigned>(controller.get_np_port_count_from_fpga_signature(), np_port_count);
    const unsigned port = port_index(portID);
    return port < offered && ((status >> port) & 1U) != 0;
}

bool Box_Mode::read_probe_serial_number(ORBE_Controller_Library& controller, unsigned port,
                                        unsigned long long* number) {
    return controller.readProbeSN(port, number);
}

bool Box_Mode::read_gain(ORBE_Controller_Library& controller, unsigned port, int channel, int* ap_gain,
                         int* lfp_gain) {
    return controller.getGain(port, channel, ap_gain, lfp_gain);
}

#define NP_FUNCTION(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments)
#define NP_FUNCTION_BY_MODE(result, name, parameters, arguments)                                             \
    result Box_Mode::name parameters {                                                                       \
        leave_alone arguments;                                                                               \
        return SUCCESS;                                                                                      \
    }
#define NP_UNSUPPORTED_BY_MODE(result, name, parameters, arguments)                                          \
    result Box_Mode::name parameters {                                                                       \
        leave_alone arguments;                                                                               \
        return NOTSUPPORTED;                                                                                 \
    }
#include "NeuropixAPI_Functions.inc"

NP_ErrorCode Box_Mode::readHSSN(int /*slotID*/, int /*portID*/, uint64_t* /*sn*/) {
    return SUCCESS;
}

} // namespace Pelgar::ORBE::npoe_adapter
