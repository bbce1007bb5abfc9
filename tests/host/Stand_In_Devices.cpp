#include "Stand_In_Devices.h"

#include "fpga/FPGA_Register_Map.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <iterator>
#include <system_error>

namespace Pelgar::ORBE::test {

namespace {

namespace base_address = register_map::base_address;
namespace configuration = register_map::configuration;

constexpr std::size_t register_bytes = 0x10000;
constexpr std::size_t bytes_per_register = sizeof(std::uint32_t);

// What opening the box looks at: all ports locked, the Neuropixels design with four ports.
constexpr std::uint32_t pll_locks_address = base_address::np_status_gpio + register_map::gpio::data;
constexpr std::uint32_t all_ports_locked = 0xF;
constexpr std::uint32_t signature_address = base_address::np_status_gpio + register_map::gpio::second_data;
constexpr std::uint32_t neuropixels_signature = 0x4E50'0040;

constexpr auto idle_wait = std::chrono::milliseconds(1);
constexpr int longest_feed_wait_ms = 10;

void require(bool succeeded, const char* text) {
    if (!succeeded) {
        throw std::system_error(errno, std::generic_category(), text);
    }
}

volatile std::uint32_t* map_registers(const std::filesystem::path& path) {
    std::ofstream(path).close();
    std::filesystem::resize_file(path, register_bytes);
    const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    require(file >= 0, "the registers cannot be opened");
    void* const view = ::mmap(nullptr, register_bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    require(view != MAP_FAILED, "the registers cannot be mapped");
    return static_cast<volatile std::uint32_t*>(view);
}

} // namespace

Stand_In_Devices::Stand_In_Devices(const std::filesystem::path& folder)
    : m_registers(map_registers(folder / "xdma0_user")) {
    m_registers[pll_locks_address / bytes_per_register] = all_ports_locked;
    m_registers[signature_address / bytes_per_register] = neuropixels_signature;
    const std::filesystem::path stream = folder / "xdma0_c2h_0";
    require(::mkfifo(stream.c_str(), 0600) == 0, "the stream cannot be made");
    m_stream = ::open(stream.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    require(m_stream >= 0, "the stream cannot be opened");
}

Stand_In_Devices::~Stand_In_Devices() {
    end_feeding();
    ::close(m_stream);
    ::munmap(const_cast<std::uint32_t*>(m_registers), register_bytes);
}

void Stand_In_Devices::end_feeding() {
    m_leaving = true;
    if (m_feeder.joinable()) {
        m_feeder.join();
    }
    m_leaving = false;
}

void Stand_In_Devices::empty_stream() const {
    std::array<std::uint8_t, 4096> bytes;
    while (::read(m_stream, bytes.data(), bytes.size()) > 0) {
    }
}

void Stand_In_Devices::play(const std::filesystem::path& recording) {
    end_feeding();
    empty_stream();
    std::ifstream file(recording, std::ios::binary);
    m_recording.assign(std::istreambuf_iterator<char>(file), {});
    m_feeder = std::thread([this] { feed_recording(); });
}

bool Stand_In_Devices::streams_are_on() const {
    const std::uint32_t value = m_registers[base_address::configuration_gpio / bytes_per_register];
    return (value & configuration::np_stream_enable_mask) != 0;
}

// False when the object goes before all bytes are read.
bool Stand_In_Devices::feed(const std::uint8_t* bytes, std::size_t size) const {
    while (size > 0 && !m_leaving) {
        const ssize_t written = ::write(m_stream, bytes, size);
        if (written > 0) {
            bytes += written;
            size -= static_cast<std::size_t>(written);
        } else {
            pollfd room{m_stream, POLLOUT, 0};
            ::poll(&room, 1, longest_feed_wait_ms);
        }
    }
    return size == 0;
}

void Stand_In_Devices::feed_recording() {
    constexpr std::array<std::uint8_t, 4096> zeros{};
    bool going_on = feed(m_recording.data(), m_recording.size());
    while (going_on && !m_leaving) {
        if (streams_are_on()) {
            std::this_thread::sleep_for(idle_wait);
        } else {
            going_on = feed(zeros.data(), zeros.size());
        }
    }
}

} // namespace Pelgar::ORBE::test
