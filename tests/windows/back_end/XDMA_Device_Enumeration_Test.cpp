// The enumeration against a system that lists what the test says and fails where the test says.
#include "back_ends/XDMA_Device_Enumeration.h"

#include "Printed.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using Pelgar::ORBE::enumerate_xdma_devices;
using Pelgar::ORBE::Setup_Api;
using Pelgar::ORBE::XDMA_Devices;
using Pelgar::ORBE::test::printed_by;

// The system's side. Its calls are plain functions, so what they know is global.
struct System {
    std::vector<std::wstring> paths;
    int failing_length = -1; // the device whose length, memory or detail cannot be had
    int failing_allocation = -1;
    int failing_detail = -1;
    int allocations = 0;
    int releases = 0;
    int destroyed_lists = 0;
    std::wstring asked_class;
    DWORD asked_flags = 0;
    DWORD record_header = 0; // the size that the caller says the detail record begins with
};

System g_system;
int g_list; // stands for the list of devices

HDEVINFO WINAPI get_class_devices(const GUID* interface_class, PCWSTR enumerator, HWND window, DWORD flags) {
    EXPECT_EQ(enumerator, nullptr);
    EXPECT_EQ(window, nullptr);
    wchar_t text[40] = {};
    EXPECT_EQ(interface_class->Data1, 0x74C7E4A9U);
    const unsigned char* const end = interface_class->Data4;
    swprintf(text, 40, L"%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
             static_cast<unsigned>(interface_class->Data1), interface_class->Data2, interface_class->Data3,
             end[0], end[1], end[2], end[3], end[4], end[5], end[6], end[7]);
    g_system.asked_class = text;
    g_system.asked_flags = flags;
    return &g_list;
}

HDEVINFO WINAPI fail_to_list(const GUID* /*class*/, PCWSTR /*enumerator*/, HWND /*window*/, DWORD /*flags*/) {
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI enumerate_interfaces(HDEVINFO list, PSP_DEVINFO_DATA /*device*/, const GUID* /*class*/,
                                 DWORD index, PSP_DEVICE_INTERFACE_DATA data) {
    EXPECT_EQ(list, &g_list);
    EXPECT_EQ(data->cbSize, sizeof(SP_DEVICE_INTERFACE_DATA));
    data->Reserved = index;
    return index < g_system.paths.size() ? TRUE : FALSE;
}

BOOL fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

BOOL WINAPI get_interface_detail(HDEVINFO /*list*/, PSP_DEVICE_INTERFACE_DATA data,
                                 PSP_DEVICE_INTERFACE_DETAIL_DATA_W detail, DWORD size, PDWORD needed,
                                 PSP_DEVINFO_DATA /*device*/) {
    const auto index = static_cast<int>(data->Reserved);
    const std::wstring& path = g_system.paths[static_cast<std::size_t>(index)];
    const std::size_t path_bytes = (path.size() + 1) * sizeof(wchar_t);
    const std::size_t length = offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath) + path_bytes;
    if (detail == nullptr) {
        *needed = static_cast<DWORD>(length);
        return fail(index == g_system.failing_length ? ERROR_INVALID_HANDLE : ERROR_INSUFFICIENT_BUFFER);
    }
    EXPECT_EQ(size, length);
    g_system.record_header = detail->cbSize;
    if (index == g_system.failing_detail) {
        return fail(ERROR_INVALID_HANDLE);
    }
    std::memcpy(detail->DevicePath, path.c_str(), path_bytes);
    return TRUE;
}

BOOL WINAPI destroy_list(HDEVINFO list) {
    EXPECT_EQ(list, &g_list);
    ++g_system.destroyed_lists;
    return TRUE;
}

LPVOID WINAPI allocate(HANDLE heap, DWORD flags, SIZE_T size) {
    EXPECT_EQ(heap, GetProcessHeap());
    EXPECT_EQ(flags, static_cast<DWORD>(HEAP_ZERO_MEMORY));
    if (g_system.allocations == g_system.failing_allocation) {
        return nullptr;
    }
    ++g_system.allocations;
    return HeapAlloc(heap, flags, size);
}

BOOL WINAPI release(HANDLE heap, DWORD flags, LPVOID memory) {
    ++g_system.releases;
    return HeapFree(heap, flags, memory);
}

class XDMADeviceEnumeration : public testing::Test {
protected:
    XDMADeviceEnumeration() { g_system = {}; }

    ~XDMADeviceEnumeration() override { EXPECT_EQ(g_system.allocations, g_system.releases); }

    // What the enumeration finds, and what it prints to standard error.
    XDMA_Devices enumerate(const std::string& expected_error = "") const {
        XDMA_Devices devices;
        const auto printed = printed_by([&] { devices = enumerate_xdma_devices(m_setup_api); });
        EXPECT_EQ(printed.out, "");
        EXPECT_EQ(printed.err, expected_error);
        EXPECT_EQ(g_system.destroyed_lists, 1);
        return devices;
    }

    Setup_Api m_setup_api{
        get_class_devices, enumerate_interfaces, get_interface_detail, destroy_list, allocate, release};
};

TEST_F(XDMADeviceEnumeration, PresentInterfacesOfTheDriversClassAreAskedFor) {
    enumerate();
    EXPECT_EQ(g_system.asked_class, L"74C7E4A9-6D5D-4A70-BC0D-20691DFF9E9D");
    EXPECT_EQ(g_system.asked_flags, static_cast<DWORD>(DIGCF_PRESENT | DIGCF_DEVICEINTERFACE));
}

TEST_F(XDMADeviceEnumeration, NoDeviceIsCountedAsNone) {
    const XDMA_Devices devices = enumerate();
    EXPECT_EQ(devices.count, 0U);
    EXPECT_EQ(devices.last_path, L"");
}

TEST_F(XDMADeviceEnumeration, LastDeviceGivesThePath) {
    g_system.paths = {L"\\\\?\\a longer one", L"\\\\?\\second", L"\\\\?\\last"};
    const XDMA_Devices devices = enumerate();
    EXPECT_EQ(devices.count, 3U);
    EXPECT_EQ(devices.last_path, L"\\\\?\\last");
    EXPECT_EQ(g_system.record_header, 8U);
    EXPECT_EQ(g_system.allocations, 3);
}

TEST_F(XDMADeviceEnumeration, PathsAreCutTo260Characters) {
    g_system.paths = {std::wstring(260, L'p')};
    EXPECT_EQ(enumerate().last_path, std::wstring(260, L'p'));
    g_system = {};
    g_system.paths = {std::wstring(300, L'p')};
    EXPECT_EQ(enumerate().last_path, std::wstring(260, L'p'));
}

TEST_F(XDMADeviceEnumeration, DeviceWithoutALengthEndsTheEnumeration) {
    g_system.paths = {L"first", L"second", L"third"};
    g_system.failing_length = 1;
    const XDMA_Devices devices = enumerate("SetupDiGetDeviceInterfaceDetail - get length failed\n");
    EXPECT_EQ(devices.count, 1U);
    EXPECT_EQ(devices.last_path, L"first");
    EXPECT_EQ(g_system.allocations, 1);
}

TEST_F(XDMADeviceEnumeration, MissingMemoryEndsTheEnumeration) {
    g_system.paths = {L"first", L"second", L"third"};
    g_system.failing_allocation = 2;
    const XDMA_Devices devices = enumerate("HeapAlloc failed\n");
    EXPECT_EQ(devices.count, 2U);
    EXPECT_EQ(devices.last_path, L"second");
}

TEST_F(XDMADeviceEnumeration, DeviceWithoutDetailEndsTheEnumeration) {
    g_system.paths = {L"first", L"second", L"third"};
    g_system.failing_detail = 0;
    const XDMA_Devices devices = enumerate("SetupDiGetDeviceInterfaceDetail - get detail failed\n");
    EXPECT_EQ(devices.count, 0U);
    EXPECT_EQ(devices.last_path, L"");
    EXPECT_EQ(g_system.allocations, 1);
}

TEST_F(XDMADeviceEnumeration, WithoutAListOfDevicesTheProcessEnds) {
    m_setup_api.get_class_devices = fail_to_list;
    EXPECT_EXIT(enumerate_xdma_devices(m_setup_api), testing::ExitedWithCode(-1),
                "^GetDevices INVALID_HANDLE_VALUE\n$");
}

} // namespace
