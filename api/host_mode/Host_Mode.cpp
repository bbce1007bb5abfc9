#include "host_mode/Host_Mode.h"

#include "adapter/Adapter_State.h"
#include "adapter/Error_Text.h"
#include "adapter/File_Switch.h"
#include "common/Never_Destroyed.h"
#include "host_mode/Simulated_Probes.h"
#include "host_streams/Prompt_Delivery.h"

#include <loguru.hpp>

#include <algorithm>
#include <cstring>
#include <mutex>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// Without a probe the ADC inputs alone fill a transfer, this one in 3 ms.
constexpr std::uint32_t transfer_bytes_without_probes = 0x1000;

// Where a probe's link has failed, all other ports go on. A driver that did not open, or whose reads fail, is
// opened again.
bool box_is_usable(const ORBE_Controller_Library& controller) {
    const Error_Level level = controller.get_current_error_level();
    return level == Error_Level::healthy || level == Error_Level::probe_link;
}

Never_Destroyed<Host_Mode> g_host_mode;

} // namespace

Host_Mode& host_mode() {
    return *g_host_mode;
}

Host_Mode::Host_Mode() = default;

void Host_Mode::configure(const Host_Mode_Options& options) {
    bool other_devices = false;
    {
        const std::lock_guard lock(m_options_mutex);
        other_devices = options.devices != m_options.devices;
        m_options = options;
    }
    Device_Table& table = options.devices == Host_Mode_Options::Devices::usb   ? m_usb
                          : options.devices == Host_Mode_Options::Devices::pxi ? m_pxi
                                                                               : m_both;
    m_devices.store(&table, std::memory_order_release);
    if (other_devices) {
        close_devices();
    }
}

Host_Mode_Options Host_Mode::options() const {
    const std::lock_guard lock(m_options_mutex);
    return m_options;
}

// ---- Devices.

int Host_Mode::list_devices(basestationID* list, int count) {
    for (std::size_t i = 0; i < devices().size(); ++i) {
        if (list != nullptr && static_cast<int>(i) < count) {
            list[i] = devices().device(i).id;
        }
    }
    return static_cast<int>(devices().size());
}

NP_ErrorCode Host_Mode::device_info(int slotID, basestationID* info) {
    const Host_Device* device = nullptr;
    if (const auto refused = find_device(slotID, device); refused != SUCCESS) {
        return refused;
    }
    write_to_host(info, device->id);
    return SUCCESS;
}

bool Host_Mode::find_slot(const basestationID* id, int* slotID) {
    const auto device = id == nullptr ? std::nullopt : devices().with_id(*id);
    if (device) {
        write_to_host(slotID, devices().slot(*device));
    }
    return device.has_value();
}

NP_ErrorCode Host_Mode::find_device(int slotID, const Host_Device*& device) const {
    const Device_Table& table = devices();
    const auto found = table.in_slot(slotID);
    device = found ? &table.device(*found) : nullptr;
    return found ? SUCCESS : NO_SLOT;
}

NP_ErrorCode Host_Mode::check_slot(int slotID) const {
    const Host_Device* device = nullptr;
    return find_device(slotID, device);
}

NP_ErrorCode Host_Mode::check_has_adc(int slotID) const {
    const Host_Device* device = nullptr;
    if (const auto refused = find_device(slotID, device); refused != SUCCESS) {
        return refused;
    }
    return device->has_adc_inputs ? SUCCESS : NOTSUPPORTED;
}

NP_ErrorCode Host_Mode::find_open(int slotID, std::size_t& device) const {
    const auto found = devices().in_slot(slotID);
    if (!found) {
        return NO_SLOT;
    }
    device = *found;
    // A process that was forked off has the states of its parent, but no box.
    return m_states[device].is_open && current_controller() ? SUCCESS : NOT_OPEN;
}

NP_ErrorCode Host_Mode::check_open(int slotID) const {
    std::size_t device = 0;
    return find_open(slotID, device);
}

NP_ErrorCode Host_Mode::check_adc(int slotID) const {
    const auto refused = check_has_adc(slotID);
    return refused != SUCCESS ? refused : check_open(slotID);
}

std::optional<unsigned> Host_Mode::box_port(int slotID, int portID) const {
    const Host_Device* device = nullptr;
    if (find_device(slotID, device) != SUCCESS || portID < 1 || portID > device->probe_ports) {
        return std::nullopt;
    }
    return port_index(portID);
}

NP_ErrorCode Host_Mode::check_port(int slotID, int portID) {
    std::size_t device = 0;
    if (const auto refused = find_open(slotID, device); refused != SUCCESS) {
        return refused;
    }
    if (portID < 1 || portID > devices().device(device).port_count) {
        return WRONG_PORT;
    }
    const auto port = box_port(slotID, portID);
    const auto controller = current_controller();
    return port && controller && has_headstage(*controller, *port) ? SUCCESS : NO_LINK;
}

bool Host_Mode::has_headstage(ORBE_Controller_Library& controller, unsigned port) const {
    const std::uint32_t ports = controller.is_in_simulation_mode() ? m_simulated_ports.load()
                                                                   : controller.get_cached_np_port_status();
    return ((ports >> port) & 1U) != 0;
}

// A host may use a probe without having opened its port.
NP_ErrorCode Host_Mode::check_link(ORBE_Controller_Library& controller, int /*slotID*/, int portID) {
    bool& is_up = m_link_is_up.at(port_index(portID));
    is_up = is_up || controller.probe_init_part_1(port_index(portID));
    return is_up ? SUCCESS : NO_LINK;
}

// ---- Opening and closing.

std::optional<NP_ErrorCode> Host_Mode::answer_opening(int slotID) {
    const auto device = devices().in_slot(slotID);
    if (!device) {
        return NO_SLOT;
    }
    const auto controller = current_controller();
    if (!any_is_open() || !controller || !box_is_usable(*controller)) {
        close_devices();
        m_opening = *device;
        return std::nullopt;
    }
    // Nothing is taken from a host that opens what is open, nor from one that has the other device.
    m_states[*device].is_open = true;
    return SUCCESS;
}

// From now on nothing is triggered.
void Host_Mode::close_devices() {
    const std::lock_guard stream(*g_stream_mutex);
    for (std::size_t device = 0; device < m_states.size(); ++device) {
        m_states[device].is_open = false;
        end_run(device);
    }
}

void Host_Mode::connect_streams(ORBE_Controller_Library& controller) {
    {
        // An operation on the box that was open before may still be under way.
        const std::lock_guard link(*g_i2c_mutex);
        m_link_is_up = {};
    }
    m_sync_source.reset();
    m_adc_inputs.reset();
    m_simulated_ports = controller.is_in_simulation_mode()
                            ? ports_in_recording(probe_file_switch(simulation_switch).first_line)
                            : 0;
    const bool has_probes =
        controller.is_in_simulation_mode() || (controller.get_cached_np_port_status() & used_ports()) != 0;
    controller.set_prompt_delivery(has_probes ? prompt_transfer_bytes : transfer_bytes_without_probes,
                                   prompt_block_super_frames);
    controller.set_stopping_despite_errors(true);
    controller.set_dropping_left_over_answers(true);
    for (unsigned port = 0; port < probe_port_count; ++port) {
        if (((used_ports() >> port) & 1U) == 0) {
            // A recording may hold it all the same.
            controller.set_NP_aqustion_listener(m_unheard, port, true);
            continue;
        }
        auto& stream = m_electrode_streams[port];
        if (!stream) {
            stream =
                std::make_shared<Electrode_Stream>(static_cast<int>(port) + 1, m_sync_source, m_sync_levels);
            m_readable_streams[port].store(stream.get(), std::memory_order_release);
        }
        controller.set_NP_aqustion_listener(stream, port, true);
        controller.set_NP_sample_listener(stream, port);
    }
    if (!m_adc_stream) {
        m_adc_stream = std::make_shared<ADC_Stream>(m_adc_inputs, m_sync_source, m_sync_levels);
        m_readable_adc_stream.store(m_adc_stream.get(), std::memory_order_release);
    }
    controller.set_RHD_aqustion_listener(m_adc_stream);
}

void Host_Mode::opened() {
    // A host may have given it another slot meanwhile.
    m_states[m_opening].is_open = true;
}

bool Host_Mode::leave(int slotID) {
    const auto device = devices().in_slot(slotID);
    if (!device) {
        return false;
    }
    bool was_open = false;
    {
        const std::lock_guard stream(*g_stream_mutex);
        was_open = m_states[*device].is_open.exchange(false);
        if (was_open) {
            stop_device(*device);
        }
    }
    return !any_is_open() && (was_open || current_controller() != nullptr);
}

void Host_Mode::turn_readers_away() {
    close_devices();
}

bool Host_Mode::any_is_open() const {
    return m_states[0].is_open || m_states[1].is_open;
}

bool Host_Mode::any_is_running() const {
    return m_states[0].is_running || m_states[1].is_running;
}

std::uint32_t Host_Mode::used_ports() const {
    int most = 0;
    for (std::size_t i = 0; i < devices().size(); ++i) {
        most = std::max(most, devices().device(i).probe_ports);
    }
    return (1U << static_cast<unsigned>(most)) - 1U;
}

// ---- Results.

int Host_Mode::log_verbosity(const char* name) {
    constexpr int never = loguru::Verbosity_MAX + 1;
    return std::strcmp(name, "ADC_getPacketFifoStatus") == 0 ? never : 1;
}

NP_ErrorCode Host_Mode::answer(const char* name, NP_ErrorCode result, bool is_explained) {
    if (result != SUCCESS && !is_explained) {
        LOG_F(ERROR, "%s : %s", name, error_text(result));
    }
    return result;
}

} // namespace Pelgar::ORBE::npoe_adapter
