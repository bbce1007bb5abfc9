// Layer: device controller (Windows). Asks the system for the devices of the XDMA driver. Called on the
// host's thread when the driver is opened; may block on the system's device registry.
#pragma once

#include "back_ends/Windows_Api.h"

#include <setupapi.h>

#include <string>

namespace Pelgar::ORBE {

// The system's calls that the enumeration makes. Tests put failing ones in their place.
struct Setup_Api {
    decltype(&SetupDiGetClassDevsW) get_class_devices = SetupDiGetClassDevsW;
    decltype(&SetupDiEnumDeviceInterfaces) enumerate_interfaces = SetupDiEnumDeviceInterfaces;
    decltype(&SetupDiGetDeviceInterfaceDetailW) get_interface_detail = SetupDiGetDeviceInterfaceDetailW;
    decltype(&SetupDiDestroyDeviceInfoList) destroy_list = SetupDiDestroyDeviceInfoList;
    decltype(&HeapAlloc) allocate = HeapAlloc;
    decltype(&HeapFree) release = HeapFree;
};

struct XDMA_Devices {
    unsigned count = 0;
    std::wstring last_path; // of the device that was enumerated last, at most 260 characters
};

// The devices that are present. A device that the system cannot describe ends the enumeration with a message;
// those before it count. Where there is no list of devices at all the process is ended, with exit(-1).
XDMA_Devices enumerate_xdma_devices(const Setup_Api& setup_api = {});

} // namespace Pelgar::ORBE
