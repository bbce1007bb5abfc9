#include "Interrupt.h"

#include <atomic>
#include <csignal>

namespace Pelgar::ORBE::tools {

namespace {

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void note_interrupt(int signal) {
    // Windows forgets the handler before it calls it.
    std::signal(signal, note_interrupt);
    g_interrupted.store(true);
}

} // namespace

void catch_interrupts() {
    std::signal(SIGINT, note_interrupt);
    std::signal(SIGTERM, note_interrupt);
}

bool interrupted() {
    return g_interrupted.load();
}

} // namespace Pelgar::ORBE::tools
