// The identity half of the host mode: versions, hardware IDs and serial numbers.
#include "host_mode/Host_Mode.h"

#include "adapter/Adapter_State.h"
#include "common/Copy_Text.h"
#include "host_mode/Simulated_Probes.h"
#include "modes/Current_Mode.h"

#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

// Every part of this box is of its first version.
HardwareID hardware_id(std::uint64_t serial_number, const char* part_number) {
    HardwareID id{1, 0, serial_number, {}};
    copy_text(part_number, id.ProductNumber, sizeof id.ProductNumber);
    return id;
}

constexpr std::uint64_t connect_card_serial_number = 12345;
// What a headstage without a legible number is.
constexpr const char* default_headstage_part_number = "NP2_HS_30";
constexpr unsigned text_length = sizeof(HardwareID::ProductNumber);

// The headstages of this box do not say their numbers; each gets that of its port.
std::uint64_t headstage_serial_number(int portID) {
    return static_cast<std::uint64_t>(portID);
}

void write_version(firmware_Info* info, const Firmware_Version& version) {
    if (info != nullptr) {
        info->major = version.major;
        info->minor = version.minor;
        info->build = version.build;
    }
}

} // namespace

bool Host_Mode::detect_headstage(ORBE_Controller_Library& controller, int slotID, int portID) {
    const auto port = box_port(slotID, portID);
    return port && has_headstage(controller, *port);
}

bool Host_Mode::read_probe_serial_number(ORBE_Controller_Library& controller, unsigned port,
                                         unsigned long long* number) {
    if (controller.is_in_simulation_mode()) {
        *number = simulated_serial_number(port);
        return true;
    }
    return controller.readProbeSN(port, number);
}

bool Host_Mode::read_gain(ORBE_Controller_Library& controller, unsigned port, int channel, int* ap_gain,
                          int* lfp_gain) {
    return controller.getGain(port, channel, ap_gain, lfp_gain) &&
           controller.get_lfp_gain(port, channel, lfp_gain);
}

// The versions of a PXI basestation are compared by hosts; the USB device answers the box's own.
NP_ErrorCode Host_Mode::bs_getFirmwareInfo(int slotID, firmware_Info* info) {
    const Host_Device* device = nullptr;
    if (const auto refused = find_device(slotID, device); refused != SUCCESS) {
        return refused;
    }
    if (device->id.platformid == NPPlatform_PXI) {
        write_version(info, options().basestation);
    }
    return SUCCESS;
}

NP_ErrorCode Host_Mode::bsc_getFirmwareInfo(int slotID, firmware_Info* info) {
    const Host_Device* device = nullptr;
    if (const auto refused = find_device(slotID, device); refused != SUCCESS) {
        return refused;
    }
    if (device->id.platformid == NPPlatform_PXI) {
        write_version(info, options().connect_card);
    }
    return SUCCESS;
}

// A host does not start without it; the box's own versions.
NP_ErrorCode Host_Mode::ob_getFirmwareInfo(int slotID, firmware_Info* info) {
    if (const auto refused = check_slot(slotID); refused != SUCCESS) {
        return refused;
    }
    if (info != nullptr) {
        write_version(info, {2, 0, 1});
        copy_text("ORBE 1.0", info->name, sizeof info->name);
    }
    return SUCCESS;
}

// The box hangs on PCIe: what is required of a USB driver is nothing, and that is there.
NP_ErrorCode Host_Mode::checkFtdiDriver(driver_version* required, driver_version* current, bool* present,
                                        bool* right) {
    write_to_host(required, driver_version{});
    write_to_host(current, driver_version{});
    write_to_host(present, true);
    write_to_host(right, true);
    return SUCCESS;
}

NP_ErrorCode Host_Mode::checkBasestationSupported(int slotID) {
    return check_slot(slotID);
}

NP_ErrorCode Host_Mode::getBSCHardwareID(int slotID, HardwareID* id) {
    if (const auto refused = check_slot(slotID); refused != SUCCESS) {
        return refused;
    }
    write_to_host(id, hardware_id(connect_card_serial_number, "ORBE NA"));
    return SUCCESS;
}

NP_ErrorCode Host_Mode::getHeadstageHardwareID(int slotID, int portID, HardwareID* id) {
    return forward_to_port("getHeadstageHardwareID", slotID, portID, [&](auto& controller) {
        char part_number[text_length] = "";
        const bool is_read = controller.readHSPN(port_index(portID), part_number, text_length);
        if (is_read) {
            const char* const text = part_number[0] == 'N' ? part_number : default_headstage_part_number;
            write_to_host(id, hardware_id(headstage_serial_number(portID), text));
        }
        return is_read;
    });
}

NP_ErrorCode Host_Mode::getFlexHardwareID(int slotID, int portID, int /*dockID*/, HardwareID* id) {
    return forward_to_port("getFlexHardwareID", slotID, portID, [&](auto& controller) {
        unsigned long long number = 0;
        const bool is_read = read_probe_serial_number(controller, port_index(portID), &number);
        if (is_read) {
            write_to_host(id, hardware_id(number, "Pelgar ORBE Flex"));
        }
        return is_read;
    });
}

NP_ErrorCode Host_Mode::getProbeHardwareID(int slotID, int portID, int /*dockID*/, HardwareID* id) {
    return forward_to_port("getProbeHardwareID", slotID, portID, [&](auto& controller) {
        unsigned long long number = 0;
        char part_number[text_length] = "";
        const bool is_read = read_probe_serial_number(controller, port_index(portID), &number) &&
                             controller.readProbePN(port_index(portID), part_number, text_length);
        if (is_read) {
            write_to_host(id, hardware_id(number, part_number));
        }
        return is_read;
    });
}

NP_ErrorCode Host_Mode::readHSSN(int slotID, int portID, uint64_t* sn) {
    if (const auto refused = check_port(slotID, portID); refused != SUCCESS) {
        return refused;
    }
    write_to_host(sn, uint64_t{headstage_serial_number(portID)});
    return SUCCESS;
}

NP_ErrorCode Host_Mode::scanBS() {
    return SUCCESS;
}

NP_ErrorCode Host_Mode::mapBS(int serialnr, int slot) {
    return m_devices.load(std::memory_order_acquire)->map(serialnr, slot) ? SUCCESS : NO_SLOT;
}

NP_ErrorCode Host_Mode::detectBS(int slotID, bool* detected) {
    write_to_host(detected, devices().in_slot(slotID).has_value());
    return SUCCESS;
}

NP_ErrorCode Host_Mode::getBSCSupportedPortCount(int slotID, int* count) {
    const Host_Device* device = nullptr;
    if (const auto refused = find_device(slotID, device); refused != SUCCESS) {
        return refused;
    }
    write_to_host(count, device->port_count);
    return SUCCESS;
}

NP_ErrorCode Host_Mode::getHSSupportedProbeCount(int slotID, int portID, int* count) {
    if (const auto refused = check_port(slotID, portID); refused != SUCCESS) {
        return refused;
    }
    write_to_host(count, 1);
    return SUCCESS;
}

NP_ErrorCode Host_Mode::detectFlex(int slotID, int portID, int /*dockID*/, bool* detected) {
    if (const auto refused = check_open(slotID); refused != SUCCESS) {
        return refused;
    }
    // It is one with its probe, and that one with its headstage.
    write_to_host(detected, check_port(slotID, portID) == SUCCESS);
    return SUCCESS;
}

} // namespace Pelgar::ORBE::npoe_adapter
