#include "host_mode/Device_Table.h"

namespace Pelgar::ORBE::npoe_adapter {

namespace {

using namespace Neuropixels;
using Devices = Host_Mode_Options::Devices;

// Hosts look for PXI basestations in the slots 2 to 18 and give USB devices the slots from 20 on.
constexpr int pxi_slot = 2;
constexpr int usb_slot = 20;
// The number that the box has as a device of its own kind.
constexpr int usb_number = 1;

constexpr Host_Device pxi{{NPPlatform_PXI, pxi_slot}, pxi_slot, 4, 4, false};
constexpr Host_Device usb{{NPPlatform_USB, usb_number}, usb_slot, 2, 2, true};

// Beside the PXI basestation, which has the probes.
constexpr Host_Device usb_without_probes{{NPPlatform_USB, usb_number}, usb_slot, 2, 0, true};

} // namespace

Device_Table::Device_Table(Devices devices) {
    const auto add = [this](const Host_Device& device) {
        m_devices[m_size] = device;
        m_slots[m_size] = device.first_slot;
        ++m_size;
    };
    if (devices != Devices::usb) {
        add(pxi);
    }
    if (devices != Devices::pxi) {
        add(devices == Devices::usb ? usb : usb_without_probes);
    }
}

std::optional<std::size_t> Device_Table::in_slot(int slot) const {
    for (std::size_t i = 0; i < m_size; ++i) {
        if (m_slots[i] == slot) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> Device_Table::with_id(const basestationID& id) const {
    for (std::size_t i = 0; i < m_size; ++i) {
        if (m_devices[i].id.platformid == id.platformid && m_devices[i].id.ID == id.ID) {
            return i;
        }
    }
    return std::nullopt;
}

bool Device_Table::map(int serial_number, int slot) {
    const auto mapped = with_id({NPPlatform_USB, serial_number});
    const auto taken = in_slot(slot);
    if (!mapped || (taken && taken != mapped)) {
        return false;
    }
    m_slots[*mapped] = slot;
    return true;
}

} // namespace Pelgar::ORBE::npoe_adapter
