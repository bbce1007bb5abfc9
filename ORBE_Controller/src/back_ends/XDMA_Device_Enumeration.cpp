#include "back_ends/XDMA_Device_Enumeration.h"

#include "common/Console.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <string_view>

namespace Pelgar::ORBE {

namespace {

// The interface class that the XDMA driver registers its devices under.
constexpr GUID xdma_interface_class{
    0x74C7E4A9, 0x6D5D, 0x4A70, {0xBC, 0x0D, 0x20, 0x69, 0x1D, 0xFF, 0x9E, 0x9D}};

// A path with its closing zero. What is longer is cut.
using Path_Buffer = std::array<wchar_t, MAX_PATH + 1>;

void copy_path(const wchar_t* path, Path_Buffer& buffer) {
    const std::wstring_view kept = std::wstring_view(path).substr(0, buffer.size() - 1);
    *std::copy(kept.begin(), kept.end(), buffer.begin()) = L'\0';
}

// Fetches the path of one device. Reports a failure and answers false.
bool fetch_path(const Setup_Api& setup_api, HDEVINFO list, SP_DEVICE_INTERFACE_DATA& device,
                Path_Buffer& path) {
    DWORD length = 0;
    if (setup_api.get_interface_detail(list, &device, nullptr, 0, &length, nullptr) == FALSE &&
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        console::err("SetupDiGetDeviceInterfaceDetail - get length failed\n");
        return false;
    }
    const HANDLE heap = GetProcessHeap();
    auto* const detail =
        static_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(setup_api.allocate(heap, HEAP_ZERO_MEMORY, length));
    if (detail == nullptr) {
        console::err("HeapAlloc failed\n");
        return false;
    }
    detail->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W);
    const bool fetched =
        setup_api.get_interface_detail(list, &device, detail, length, nullptr, nullptr) != FALSE;
    if (fetched) {
        copy_path(detail->DevicePath, path);
    } else {
        console::err("SetupDiGetDeviceInterfaceDetail - get detail failed\n");
    }
    setup_api.release(heap, 0, detail);
    return fetched;
}

} // namespace

XDMA_Devices enumerate_xdma_devices(const Setup_Api& setup_api) {
    const HDEVINFO list = setup_api.get_class_devices(&xdma_interface_class, nullptr, nullptr,
                                                      DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (list == INVALID_HANDLE_VALUE) {
        console::err("GetDevices INVALID_HANDLE_VALUE\n");
        std::exit(-1);
    }
    XDMA_Devices devices;
    Path_Buffer path{};
    SP_DEVICE_INTERFACE_DATA device{};
    device.cbSize = sizeof device;
    while (setup_api.enumerate_interfaces(list, nullptr, &xdma_interface_class, devices.count, &device) !=
               FALSE &&
           fetch_path(setup_api, list, device, path)) {
        ++devices.count;
    }
    setup_api.destroy_list(list);
    devices.last_path = path.data();
    return devices;
}

} // namespace Pelgar::ORBE
