#include "back_ends/CP_Win_ORBE_Controller.h"

#include "back_ends/Bar_Mapping_Error.h"
#include "back_ends/Windows_Api.h"
#include "back_ends/XDMA_Device_Enumeration.h"
#include "common/Console.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace Pelgar::ORBE {

namespace {

// The driver's device files lie below the path of the device.
constexpr const wchar_t* registers_file = L"\\user";
constexpr const wchar_t* stream_file = L"\\c2h_0";

// Asks the driver to map the register BAR into this process.
constexpr DWORD map_bar_request = 0x22001C;

struct Mapped_Bar {
    std::uint64_t address; // in this process
    std::uint64_t size;    // in bytes
};

static_assert(sizeof(Mapped_Bar) == 16);

// A device's path is ASCII.
std::string narrow(const std::wstring& path) {
    std::string text;
    for (const wchar_t character : path) {
        text += character < 0x80 ? static_cast<char>(character) : '?';
    }
    return text;
}

} // namespace

CP_Win_ORBE_Controller::~CP_Win_ORBE_Controller() {
    console::out("CP_Win_ORBE_Controller dtor, closing driver connection\n");
    CP_Win_ORBE_Controller::close_driver_connection();
}

void CP_Win_ORBE_Controller::write_register(std::uint32_t address, std::uint32_t value) {
    m_bar[address >> 2] = value;
}

std::uint32_t CP_Win_ORBE_Controller::read_register(std::uint32_t address) {
    return m_bar[address >> 2];
}

bool CP_Win_ORBE_Controller::open_driver_connection(const std::string& /*device_name*/, bool /*flag*/) {
    const XDMA_Devices devices = enumerate_xdma_devices();
    console::out("Devices found: ", devices.count, "\n");
    if (devices.count == 0) {
        set_open_failure("no device of the XDMA driver");
        return false;
    }
    if (!open_device(m_mm_handle, devices.last_path + registers_file) ||
        !open_device(m_c2h_handle, devices.last_path + stream_file)) {
        return false;
    }
    map_bar();
    set_open_failure({});
    return true;
}

void CP_Win_ORBE_Controller::close_driver_connection() {
    if (m_mm_handle.is_open()) {
        console::out("Closing mm driver handle\n");
        m_mm_handle.close();
    }
    if (m_c2h_handle.is_open()) {
        console::out("Closing c2h driver handle\n");
        m_c2h_handle.close();
    }
}

bool CP_Win_ORBE_Controller::set_extended_property(std::uint32_t key, std::uint32_t value) {
    console::out("CP_Win_ORBE_Controller::set_extended_property ", key, " : ", value, "\n");
    return false;
}

bool CP_Win_ORBE_Controller::setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                                        std::uint32_t extra) {
    m_read_request = {buffer, size, flag, extra};
    return true;
}

std::uint32_t CP_Win_ORBE_Controller::read_stream(std::uint64_t /*unused*/, bool complete) {
    return m_read_request.fill(
        complete, [this](std::uint8_t* buffer, std::uint32_t size) { return read_device(buffer, size); });
}

void CP_Win_ORBE_Controller::write_xdma_register(std::uint32_t /*address*/, std::uint32_t /*value*/) {
    console::err("Uimplemented function in Windows : write_xdma_register \n");
}

std::uint32_t CP_Win_ORBE_Controller::read_xdma_register(std::uint32_t /*address*/) {
    console::err("Uimplemented function in Windows : read_xdma_register \n");
    return 0;
}

// Opens the device file in place of what `handle` held, and reports a failure.
bool CP_Win_ORBE_Controller::open_device(Device_Handle& handle, const std::wstring& path) {
    Device_Handle opened(path);
    if (!opened.is_open()) {
        const auto error = static_cast<long>(GetLastError());
        console::err("Error opening device, win32 error code: ", error, "\n");
        set_open_failure("win32 error code " + std::to_string(error) + ": " + narrow(path));
    }
    handle = std::move(opened);
    return handle.is_open();
}

void CP_Win_ORBE_Controller::map_bar() {
    Mapped_Bar bar{};
    DWORD returned = 0;
    if (DeviceIoControl(m_mm_handle.get(), map_bar_request, nullptr, 0, &bar, sizeof bar, &returned,
                        nullptr) == FALSE) {
        throw std::runtime_error(bar_mapping_error_text(GetLastError()));
    }
    console::out(bar.size, " sized bar mapped to user space\n");
    m_bar = reinterpret_cast<volatile std::uint32_t*>(bar.address);
}

std::uint32_t CP_Win_ORBE_Controller::read_device(std::uint8_t* buffer, std::uint32_t size) const {
    DWORD count = 0;
    if (ReadFile(m_c2h_handle.get(), buffer, size, &count, nullptr) == FALSE) {
        const auto error = static_cast<int>(GetLastError());
        console::err("ReadFile from device failed: ", error);
        throw std::runtime_error("c2h transfer failed");
    }
    return count;
}

} // namespace Pelgar::ORBE
