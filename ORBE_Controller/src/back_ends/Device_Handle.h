// Layer: device controller (Windows). Owns an open device file of the XDMA driver. Closing may wait for the
// driver.
#pragma once

#include <string>

namespace Pelgar::ORBE {

class Device_Handle {
public:
    Device_Handle() = default;
    // Opens the file for reading and writing, for this process alone. On failure the object is closed and
    // GetLastError tells why.
    explicit Device_Handle(const std::wstring& path);
    ~Device_Handle();
    Device_Handle(const Device_Handle&) = delete;
    Device_Handle& operator=(const Device_Handle&) = delete;
    // Closes what the left side held.
    Device_Handle& operator=(Device_Handle&& other) noexcept;

    bool is_open() const { return m_handle != nullptr; }

    // As the system calls take it; null when closed.
    void* get() const { return m_handle; }

    void close();

private:
    void* m_handle = nullptr;
};

} // namespace Pelgar::ORBE
