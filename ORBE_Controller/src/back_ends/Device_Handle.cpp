#include "back_ends/Device_Handle.h"

#include "back_ends/Windows_Api.h"

#include <utility>

namespace Pelgar::ORBE {

Device_Handle::Device_Handle(const std::wstring& path) {
    constexpr DWORD not_shared = 0;
    const HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, not_shared, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
        m_handle = handle;
    }
}

Device_Handle::~Device_Handle() {
    close();
}

Device_Handle& Device_Handle::operator=(Device_Handle&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    other.close();
    return *this;
}

void Device_Handle::close() {
    if (is_open()) {
        CloseHandle(m_handle);
        m_handle = nullptr;
    }
}

} // namespace Pelgar::ORBE
