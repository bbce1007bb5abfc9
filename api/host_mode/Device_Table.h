// Layer: façade, host mode. The devices as which the box appears, and their slots. Any thread; nothing
// blocks.
#pragma once

#include "NeuropixAPI.h"
#include "common/Relaxed.h"
#include "host_mode/Host_Mode_Options.h"

#include <array>
#include <cstddef>
#include <optional>

namespace Pelgar::ORBE::npoe_adapter {

struct Host_Device {
    Neuropixels::basestationID id;
    int first_slot;  // before a host gives it another one
    int port_count;  // as hosts see it
    int probe_ports; // of these, so many lead to ports of the box
    bool has_adc_inputs;
};

class Device_Table {
public:
    static constexpr std::size_t most_devices = 2;

    explicit Device_Table(Host_Mode_Options::Devices devices);

    std::size_t size() const { return m_size; }

    // Below `size`.
    const Host_Device& device(std::size_t index) const { return m_devices[index]; }

    int slot(std::size_t index) const { return m_slots[index]; }

    // Nothing where no device is.
    std::optional<std::size_t> in_slot(int slot) const;
    std::optional<std::size_t> with_id(const Neuropixels::basestationID& id) const;

    // Gives a USB device another slot. False when there is no such device, or the slot is taken.
    bool map(int serial_number, int slot);

private:
    std::array<Host_Device, most_devices> m_devices{};
    std::array<Relaxed<int>, most_devices> m_slots;
    std::size_t m_size = 0;
};

} // namespace Pelgar::ORBE::npoe_adapter
