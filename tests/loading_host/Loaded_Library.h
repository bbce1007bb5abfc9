// Test support. A shared library that the program loads and lets go of itself. One thread.
#pragma once

#include <string>

namespace Pelgar::ORBE::host {

class Loaded_Library {
public:
    // Throws std::runtime_error when the library cannot be loaded.
    explicit Loaded_Library(const std::string& path);
    ~Loaded_Library();
    Loaded_Library(const Loaded_Library&) = delete;
    Loaded_Library& operator=(const Loaded_Library&) = delete;

    // A function by the name that the library exports it under. Throws std::runtime_error when there is none.
    template <typename Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(address(name));
    }

    // Whether the system has the library of this path in memory, whoever has loaded it.
    static bool is_in_memory(const std::string& path);

private:
    using Address = void (*)();

    Address address(const char* name) const;

    void* m_handle = nullptr;
};

} // namespace Pelgar::ORBE::host
