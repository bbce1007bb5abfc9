#include "adapter/Module_Pin.h"

#if defined(_WIN32)
#include <loguru.hpp>

#include <windows.h>
#endif

namespace Pelgar::ORBE::npoe_adapter {

#if defined(_WIN32)

void pin_own_module() {
    static const bool pinned = [] {
        static const char address_in_module = 0;
        HMODULE module = nullptr;
        return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                  reinterpret_cast<LPCWSTR>(&address_in_module), &module) != FALSE;
    }();
    if (!pinned) {
        LOG_F(WARNING, "The library must not be unloaded while a basestation is open");
    }
}

#else

// The linker has marked the shared library as one that is never unloaded.
void pin_own_module() {}

#endif

} // namespace Pelgar::ORBE::npoe_adapter
