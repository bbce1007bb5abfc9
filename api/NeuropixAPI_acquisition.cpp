// Layer: façade. Starting and stopping acquisition, and handing packets to the host. Called on the host's
// threads, the reading functions usually on one thread a port; those block until packets are there.
#include "NeuropixAPI.h"

#include "adapter/Adapter_State.h"
#include "adapter/Pump_Thread.h"
#include "adapter/Throughput_Report.h"
#include "common/Waiting.h"

#include <loguru.hpp>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <system_error>

namespace Neuropixels {

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::npoe_adapter;

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
        const electrodePacket* front =
            queue.peek_xfer_buffer_from_queue(static_cast<std::size_t>(requested - i));
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

} // namespace

NP_ErrorCode start_acquisition(int slotID, int portID) {
    LOG_SCOPE_F(INFO, "start_acquisition");
    LOG_F(INFO, "starting acquisition : slotID : %d, portID : %d", slotID, portID);
    // A self test that pumps is waited for.
    const Stream_Lock stream(*g_stream_mutex);
    bool running = false;
    if (!g_acquisition_running.compare_exchange_strong(running, true)) {
        return SUCCESS;
    }
    const auto enabled = forward_to_controller("start_acquisition", [](auto& box) {
        box.enable_streaming(true, {0, 1, 2, 3}, true, {}, true);
        return true;
    });
    if (enabled != SUCCESS) {
        g_acquisition_running = false;
        return SUCCESS;
    }
    g_pump_ended = false;
    g_stop_requested = false;
    try {
        start_pump_thread(current_controller(), slotID, portID);
    } catch (const std::system_error&) {
        disable_streaming("start_acquisition");
        g_acquisition_running = false;
        throw;
    }
    return SUCCESS;
}

NP_ErrorCode stop_acquisition(int slotID, int portID) {
    LOG_SCOPE_F(INFO, "stop_acquisition");
    LOG_F(INFO, "slotID : %d, portID : %d", slotID, portID);
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

NP_ErrorCode readElectrodeData(int /*slotID*/, int portID, int /*dockID*/, electrodePacket* packets,
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

NP_ErrorCode getElectrodeDataFifoState(int /*slotID*/, int portID, int /*dockID*/, int* packetsAvailable,
                                       int* headroom) {
    const auto converter = current_np_converter(portID);
    const int available = converter ? static_cast<int>(converter->queue().size()) : 0;
    write_to_host(packetsAvailable, available);
    write_to_host(headroom, static_cast<int>(packet_queue_limit) - available);
    return SUCCESS;
}

NP_ErrorCode ADC_readPackets(int /*slotID*/, PacketInfo* packetInfo, int16_t* data, int /*channelCount*/,
                             int packetCount, int* packetsRead) {
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
            converter->read_sample_packet_to_buffer(samples, status,
                                                    static_cast<std::size_t>(requested - taken));
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

} // namespace Neuropixels
