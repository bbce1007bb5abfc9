// Test support, host mode. Waits for what a host or the box does on other threads.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace Pelgar::ORBE::test {

// Whether `done` has come true, looked at every millisecond; false when that takes longer than `patience`.
inline bool wait_until(const std::function<bool()>& done, std::chrono::seconds patience) {
    const auto begin = std::chrono::steady_clock::now();
    while (!done()) {
        if (std::chrono::steady_clock::now() - begin > patience) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace Pelgar::ORBE::test
