#include "adapter/Thread_Priority.h"

#include <loguru.hpp>

#if defined(_WIN32)
#include <windows.h>
#else
#include <cerrno>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace Pelgar::ORBE::npoe_adapter {

#if defined(_WIN32)

int request_above_normal_priority() {
    return SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_ABOVE_NORMAL) != 0
               ? 0
               : static_cast<int>(GetLastError());
}

#else

// On Linux a nice level belongs to a thread, named by its kernel id.
int request_above_normal_priority() {
    // The one that the scheduler takes for "above normal".
    constexpr int above_normal_nice_level = -5;
    const auto thread_id = static_cast<id_t>(syscall(SYS_gettid));
    return setpriority(PRIO_PROCESS, thread_id, above_normal_nice_level) == 0 ? 0 : errno;
}

#endif

void raise_own_thread_priority(int (*request)()) {
    if (const int error = request(); error != 0) {
        VLOG_F(1, "SetThreadPriority failed : %d", error);
    } else {
        VLOG_F(1, "ThreadPriority of main pump increased to THREAD_PRIORITY_ABOVE_NORMAL");
    }
}

} // namespace Pelgar::ORBE::npoe_adapter
