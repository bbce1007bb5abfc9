// The streaming half of the host mode: triggers, reads and queues.
#include "host_mode/Host_Mode.h"

#include "adapter/Adapter_State.h"
#include "adapter/Pump_Thread.h"

#include <loguru.hpp>

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <system_error>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// What the queue of a port holds, as hosts count.
constexpr int electrode_capacity = static_cast<int>(Electrode_Stream::capacity);
constexpr int adc_capacity = static_cast<int>(ADC_Stream::capacity);

std::size_t at_least_0(int number) {
    return static_cast<std::size_t>(std::max(number, 0));
}

} // namespace

// ---- Starting and stopping.

NP_ErrorCode Host_Mode::setSWTrigger(int slotID) {
    return start(slotID, 0);
}

NP_ErrorCode Host_Mode::setSWTriggerEx(int slotID, swtriggerflags_t /*triggerflags*/) {
    return start(slotID, 0);
}

NP_ErrorCode Host_Mode::start(int slotID, int /*portID*/) {
    if (const auto refused = check_open(slotID); refused != SUCCESS) {
        return refused;
    }
    // A self test that pumps is waited for.
    const std::lock_guard stream(*g_stream_mutex);
    // It may have been closed meanwhile.
    std::size_t device = 0;
    if (const auto refused = find_open(slotID, device); refused != SUCCESS) {
        return refused;
    }
    if (g_pump_broke_off) {
        // Nothing comes any more, whoever triggered.
        end_run(0);
        end_run(1);
        stop_box();
    }
    if (m_states[device].is_running) {
        return SUCCESS;
    }
    if (any_is_running()) {
        begin_run(device);
        return SUCCESS;
    }
    stop_box();
    // The run takes in what comes before the box sends anything: the first row may be here before the thread
    // that triggered goes on.
    begin_run(device);
    const auto started = start_box();
    if (started != SUCCESS) {
        end_run(device);
    }
    return started;
}

NP_ErrorCode Host_Mode::stop(int slotID, int /*portID*/) {
    return arm(slotID);
}

NP_ErrorCode Host_Mode::arm(int slotID) {
    if (const auto refused = check_open(slotID); refused != SUCCESS) {
        return refused;
    }
    const std::lock_guard stream(*g_stream_mutex);
    // Who has closed it meanwhile stops it as well.
    std::size_t device = 0;
    if (find_open(slotID, device) == SUCCESS) {
        stop_device(device);
    }
    return SUCCESS;
}

void Host_Mode::stop_device(std::size_t device) {
    end_run(device);
    if (!any_is_running()) {
        stop_box();
    }
}

// The streams' samples are counted from 0 for all devices at once, before the first row comes.
NP_ErrorCode Host_Mode::start_box() {
    ++m_streaming;
    for (const auto& stream : m_electrode_streams) {
        if (stream) {
            stream->begin_streaming(m_streaming);
        }
    }
    m_adc_stream->begin_streaming(m_streaming);
    const bool four_ports = used_ports() > 0x3;
    const auto enabled = forward_to_controller("setSWTrigger", [four_ports](auto& box) {
        if (box.is_in_simulation_mode()) {
            box.play_from_beginning_in_real_time();
        }
        if (four_ports) {
            box.enable_streaming(true, {0, 1, 2, 3}, true, {}, true);
        } else {
            box.enable_streaming(true, {0, 1}, true, {}, true);
        }
        return true;
    });
    if (enabled != SUCCESS) {
        return enabled;
    }
    g_acquisition_running = true;
    try {
        start_pump_thread(current_controller(), 0, 0);
    } catch (const std::system_error& exception) {
        LOG_F(ERROR, "setSWTrigger : %s", exception.what());
        g_acquisition_running = false;
        disable_streaming("setSWTrigger");
        return FAILED;
    }
    return SUCCESS;
}

// Returns when everything that was pumped has reached the streams, which do not want it any more.
void Host_Mode::stop_box() {
    if (!g_acquisition_running) {
        return;
    }
    disable_streaming("arm");
    end_pump_thread();
    if (const auto controller = current_controller()) {
        controller->wait_until_delivered();
        controller->drop_unfinished_blocks();
    }
    g_acquisition_running = false;
}

void Host_Mode::begin_run(std::size_t device) {
    m_states[device].is_running = true;
    if (devices().device(device).probe_ports > 0) {
        for (const auto& stream : m_electrode_streams) {
            if (stream) {
                stream->begin_run();
            }
        }
    }
    if (devices().device(device).has_adc_inputs) {
        m_adc_stream->begin_run();
    }
}

void Host_Mode::end_run(std::size_t device) {
    m_states[device].is_running = false;
    if (devices().device(device).probe_ports > 0) {
        for (const auto& stream : m_electrode_streams) {
            if (stream) {
                stream->end_run();
            }
        }
    }
    if (devices().device(device).has_adc_inputs && m_adc_stream) {
        m_adc_stream->end_run();
    }
}

// ---- Reading.

NP_ErrorCode Host_Mode::check_stream_port(int slotID, int portID) const {
    const Host_Device* device = nullptr;
    if (const auto refused = find_device(slotID, device); refused != SUCCESS) {
        return refused;
    }
    return portID >= 1 && portID <= device->port_count ? SUCCESS : WRONG_PORT;
}

Electrode_Stream* Host_Mode::electrode_stream(int slotID, int portID) const {
    const auto port = box_port(slotID, portID);
    return port ? m_readable_streams.at(*port).load(std::memory_order_acquire) : nullptr;
}

NP_ErrorCode Host_Mode::read_electrode_data(int slotID, int portID, electrodePacket* packets,
                                            int* actualAmount, int requestedAmount) {
    write_to_host(actualAmount, 0);
    if (const auto refused = check_stream_port(slotID, portID); refused != SUCCESS) {
        return refused;
    }
    if (Electrode_Stream* const stream = electrode_stream(slotID, portID)) {
        write_to_host(actualAmount, static_cast<int>(stream->take(packets, at_least_0(requestedAmount))));
    }
    return SUCCESS;
}

NP_ErrorCode Host_Mode::electrode_fifo_state(int slotID, int portID, int* packetsAvailable, int* headroom) {
    write_to_host(packetsAvailable, 0);
    write_to_host(headroom, electrode_capacity);
    if (const auto refused = check_stream_port(slotID, portID); refused != SUCCESS) {
        return refused;
    }
    if (const Electrode_Stream* const stream = electrode_stream(slotID, portID)) {
        const int available = static_cast<int>(stream->available());
        write_to_host(packetsAvailable, available);
        write_to_host(headroom, electrode_capacity - available);
    }
    return SUCCESS;
}

NP_ErrorCode Host_Mode::read_adc_packets(int slotID, PacketInfo* packetInfo, int16_t* data, int channelCount,
                                         int packetCount, int* packetsRead) {
    write_to_host(packetsRead, 0);
    if (const auto refused = check_has_adc(slotID); refused != SUCCESS) {
        return refused;
    }
    if (channelCount < 0) {
        return PARAMETER_INVALID;
    }
    if (ADC_Stream* const stream = m_readable_adc_stream.load(std::memory_order_acquire)) {
        const std::size_t taken =
            stream->take(packetInfo, data, at_least_0(channelCount), at_least_0(packetCount));
        write_to_host(packetsRead, static_cast<int>(taken));
    }
    return SUCCESS;
}

NP_ErrorCode Host_Mode::ADC_getPacketFifoStatus(int slotID, int* packetsAvailable, int* headroom) {
    write_to_host(packetsAvailable, 0);
    write_to_host(headroom, adc_capacity);
    if (const auto refused = check_has_adc(slotID); refused != SUCCESS) {
        return refused;
    }
    if (const ADC_Stream* const stream = m_readable_adc_stream.load(std::memory_order_acquire)) {
        const int available = static_cast<int>(stream->available());
        write_to_host(packetsAvailable, available);
        write_to_host(headroom, adc_capacity - available);
    }
    return SUCCESS;
}

} // namespace Pelgar::ORBE::npoe_adapter
