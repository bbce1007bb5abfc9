#include "library_run/Interrupt.h"

#include <atomic>
#include <csignal>

namespace Pelgar::ORBE::tools {

namespace {

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

#if defined(_WIN32)
constexpr int stop_signals[] = {SIGINT, SIGTERM, SIGBREAK}; // the last: the console is closed
#else
constexpr int stop_signals[] = {SIGINT, SIGTERM, SIGHUP};
#endif

extern "C" void note_interrupt(int signal) {
    // Windows forgets the handler before it calls it.
    std::signal(signal, note_interrupt);
    g_interrupted.store(true);
}

} // namespace

void catch_interrupts() {
    for (const int signal : stop_signals) {
        if (std::signal(signal, note_interrupt) == SIG_IGN) {
            std::signal(signal, SIG_IGN);
        }
    }
}

bool interrupted() {
    return g_interrupted.load();
}

} // namespace Pelgar::ORBE::tools
