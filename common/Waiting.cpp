#include "common/Waiting.h"

#include "common/Never_Destroyed.h"

#include <mutex>
#include <thread>
#include <utility>

namespace Pelgar::ORBE {

namespace {

Never_Destroyed<std::mutex> g_waiter_mutex;
Never_Destroyed<Waiter> g_waiter;

Waiter current_waiter() {
    const std::lock_guard lock(*g_waiter_mutex);
    return *g_waiter;
}

} // namespace

void wait_for(std::chrono::milliseconds duration) {
    if (const Waiter waiter = current_waiter()) {
        waiter(duration);
    } else {
        std::this_thread::sleep_for(duration);
    }
}

Waiter replace_waiter(Waiter waiter) {
    const std::lock_guard lock(*g_waiter_mutex);
    return std::exchange(*g_waiter, std::move(waiter));
}

} // namespace Pelgar::ORBE
