#include "back_ends/CP_Linux_ORBE_Controller.h"

#include "common/Console.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace Pelgar::ORBE {

namespace {

constexpr std::string_view device_prefix = "xdma";
constexpr std::string_view registers_suffix = "_user";
constexpr std::string_view stream_suffix = "_c2h_0";

// What is mapped of the BAR: all registers of the design lie in its first 64 KiB. The driver refuses to map
// more than the BAR has, and its device, which is no regular file, does not tell how much that is.
constexpr std::size_t register_space_size = 0x1'0000;

// The names of the driver's devices, in the order of their numbers.
std::vector<std::string> device_names(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::string name = entry->path().filename().string();
        if (name.starts_with(device_prefix) && name.ends_with(registers_suffix)) {
            name.resize(name.size() - registers_suffix.size());
            names.push_back(std::move(name));
        }
    }
    std::sort(names.begin(), names.end(), [](const std::string& left, const std::string& right) {
        return left.size() != right.size() ? left.size() < right.size() : left < right;
    });
    return names;
}

// What the system says of a device, for example "Permission denied: /dev/xdma0_user".
std::string reason_and_device(int error, const std::string& path) {
    return std::generic_category().message(error) + ": " + path;
}

} // namespace

CP_Linux_ORBE_Controller::CP_Linux_ORBE_Controller(std::string device_folder)
    : m_device_folder(std::move(device_folder)) {}

CP_Linux_ORBE_Controller::~CP_Linux_ORBE_Controller() {
    console::out("CP_Linux_ORBE_Controller dtor, closing driver connection\n");
    CP_Linux_ORBE_Controller::close_driver_connection();
    unmap_bar();
}

void CP_Linux_ORBE_Controller::write_register(std::uint32_t address, std::uint32_t value) {
    m_bar[address >> 2] = value;
}

std::uint32_t CP_Linux_ORBE_Controller::read_register(std::uint32_t address) {
    return m_bar[address >> 2];
}

bool CP_Linux_ORBE_Controller::open_driver_connection(const std::string& /*device_name*/, bool /*flag*/) {
    const std::vector<std::string> names = device_names(m_device_folder);
    console::out("Devices found: ", names.size(), "\n");
    if (names.empty()) {
        set_open_failure("no device of the XDMA driver in " + m_device_folder);
        return false;
    }
    const std::string device = m_device_folder + "/" + names.back();
    const std::string registers = device + std::string(registers_suffix);
    if (!open_device(m_mm_handle, registers) ||
        !open_device(m_c2h_handle, device + std::string(stream_suffix))) {
        return false;
    }
    map_bar(registers);
    set_open_failure({});
    return true;
}

void CP_Linux_ORBE_Controller::close_driver_connection() {
    if (m_mm_handle.is_open()) {
        console::out("Closing mm driver handle\n");
        m_mm_handle.close();
    }
    if (m_c2h_handle.is_open()) {
        console::out("Closing c2h driver handle\n");
        m_c2h_handle.close();
    }
}

bool CP_Linux_ORBE_Controller::set_extended_property(std::uint32_t key, std::uint32_t value) {
    console::out("CP_Linux_ORBE_Controller::set_extended_property ", key, " : ", value, "\n");
    return false;
}

bool CP_Linux_ORBE_Controller::setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                                          std::uint32_t extra) {
    m_read_request = {buffer, size, flag, extra};
    return true;
}

std::uint32_t CP_Linux_ORBE_Controller::read_stream(std::uint64_t /*unused*/, bool complete) {
    return m_read_request.fill(
        complete, [this](std::uint8_t* buffer, std::uint32_t size) { return read_device(buffer, size); });
}

void CP_Linux_ORBE_Controller::write_xdma_register(std::uint32_t /*address*/, std::uint32_t /*value*/) {
    console::err("Uimplemented function in Linux : write_xdma_register \n");
}

std::uint32_t CP_Linux_ORBE_Controller::read_xdma_register(std::uint32_t /*address*/) {
    console::err("Uimplemented function in Linux : read_xdma_register \n");
    return 0;
}

// Opens the device file in place of what `handle` held, and reports a failure.
bool CP_Linux_ORBE_Controller::open_device(File_Descriptor& handle, const std::string& path) {
    File_Descriptor opened(path);
    if (!opened.is_open()) {
        set_open_failure(reason_and_device(errno, path));
        console::err("Error opening device, ", open_failure(), "\n");
    }
    handle = std::move(opened);
    return handle.is_open();
}

void CP_Linux_ORBE_Controller::map_bar(const std::string& path) {
    struct stat status {};

    std::size_t size = register_space_size;
    if (::fstat(m_mm_handle.get(), &status) == 0 && status.st_size > 0) {
        size = std::min(size, static_cast<std::size_t>(status.st_size));
    }
    void* mapping = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, m_mm_handle.get(), 0);
    if (mapping == MAP_FAILED) {
        set_open_failure(reason_and_device(errno, path));
        throw std::runtime_error("Error mapping registers, " + open_failure());
    }
    console::out(size, " sized bar mapped to user space\n");
    unmap_bar();
    m_bar = static_cast<std::uint32_t*>(mapping);
    m_bar_size = size;
}

void CP_Linux_ORBE_Controller::unmap_bar() {
    if (m_bar != nullptr) {
        ::munmap(const_cast<std::uint32_t*>(m_bar), m_bar_size);
        m_bar = nullptr;
    }
}

std::uint32_t CP_Linux_ORBE_Controller::read_device(std::uint8_t* buffer, std::uint32_t size) const {
    ssize_t count = 0;
    do {
        count = ::read(m_c2h_handle.get(), buffer, size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        const int error = errno;
        console::err("ReadFile from device failed: ", error);
        throw std::runtime_error("c2h transfer failed");
    }
    return static_cast<std::uint32_t>(count);
}

} // namespace Pelgar::ORBE
