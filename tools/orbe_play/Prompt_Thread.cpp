#include "Prompt_Thread.h"

#if defined(__linux__)
#include <sys/resource.h>
#endif

namespace Pelgar::ORBE::recording {

void make_this_thread_prompt() {
#if defined(__linux__)
    // On Linux this is the nice value of the calling thread alone.
    constexpr int calling_thread = 0;
    constexpr int most_urgent = -20;
    setpriority(PRIO_PROCESS, calling_thread, most_urgent);
#endif
}

} // namespace Pelgar::ORBE::recording
