#include "Loaded_Library.h"

#include <stdexcept>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace Pelgar::ORBE::host {

#if defined(_WIN32)

Loaded_Library::Loaded_Library(const std::string& path) : m_handle(LoadLibraryA(path.c_str())) {
    if (m_handle == nullptr) {
        throw std::runtime_error(path + " cannot be loaded");
    }
}

Loaded_Library::~Loaded_Library() {
    FreeLibrary(static_cast<HMODULE>(m_handle));
}

bool Loaded_Library::is_in_memory(const std::string& path) {
    return GetModuleHandleA(path.c_str()) != nullptr;
}

Loaded_Library::Address Loaded_Library::address(const char* name) const {
    const auto found = reinterpret_cast<Address>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
    if (found == nullptr) {
        throw std::runtime_error(std::string(name) + " is not exported");
    }
    return found;
}

#else

Loaded_Library::Loaded_Library(const std::string& path)
    : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (m_handle == nullptr) {
        throw std::runtime_error(path + " cannot be loaded");
    }
}

Loaded_Library::~Loaded_Library() {
    dlclose(m_handle);
}

bool Loaded_Library::is_in_memory(const std::string& path) {
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr) {
        return false;
    }
    dlclose(handle);
    return true;
}

Loaded_Library::Address Loaded_Library::address(const char* name) const {
    const auto found = reinterpret_cast<Address>(dlsym(m_handle, name));
    if (found == nullptr) {
        throw std::runtime_error(std::string(name) + " is not exported");
    }
    return found;
}

#endif

} // namespace Pelgar::ORBE::host
