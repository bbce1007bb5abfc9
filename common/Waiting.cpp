#include "common/Waiting.h"

#include "common/Never_Destroyed.h"

#include <mutex>
#include <thread>
#include <utility>

namespace Pelgar::ORBE {

namespace {

Never_Destroyed<std::mutex> g_mutex;
Never_Destroyed<Waiter> g_waiter;
Never_Destroyed<Planning_Clock> g_clock;

// A copy, so that it is called without the lock.
template <typename Function>
Function current(Never_Destroyed<Function>& function) {
    const std::lock_guard lock(*g_mutex);
    return *function;
}

template <typename Function>
Function exchange(Never_Destroyed<Function>& function, Function&& replacement) {
    const std::lock_guard lock(*g_mutex);
    return std::exchange(*function, std::forward<Function>(replacement));
}

} // namespace

void wait_for(std::chrono::milliseconds duration) {
    if (const Waiter waiter = current(g_waiter)) {
        waiter(duration);
    } else {
        std::this_thread::sleep_for(duration);
    }
}

Waiter replace_waiter(Waiter waiter) {
    return exchange(g_waiter, std::move(waiter));
}

std::chrono::steady_clock::time_point planning_time() {
    const Planning_Clock clock = current(g_clock);
    return clock ? clock() : std::chrono::steady_clock::now();
}

Planning_Clock replace_planning_clock(Planning_Clock clock) {
    return exchange(g_clock, std::move(clock));
}

} // namespace Pelgar::ORBE
