#include "common/Physical_Memory.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace Pelgar::ORBE {

#if defined(_WIN32)

std::uint64_t physical_memory() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) != 0 ? status.ullTotalPhys : 0;
}

#else

std::uint64_t physical_memory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long page_size = sysconf(_SC_PAGESIZE);
    return pages > 0 && page_size > 0
               ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page_size)
               : 0;
}

#endif

} // namespace Pelgar::ORBE
