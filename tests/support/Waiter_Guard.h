// Test support: stands in for the clock while it lives. Every fixed wait is recorded and costs next to
// nothing.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <vector>

namespace Pelgar::ORBE::test {

class Waiter_Guard {
public:
    Waiter_Guard();
    ~Waiter_Guard();
    Waiter_Guard(const Waiter_Guard&) = delete;
    Waiter_Guard& operator=(const Waiter_Guard&) = delete;

    std::vector<std::chrono::milliseconds> waits() const;
    std::size_t count(std::chrono::milliseconds duration) const;

    // Called on the waiting thread at every wait, with the number of waits so far.
    void on_wait(std::function<void(std::size_t)> action);

private:
    void wait(std::chrono::milliseconds duration);

    mutable std::mutex m_mutex;
    std::vector<std::chrono::milliseconds> m_waits;
    std::function<void(std::size_t)> m_action;
};

} // namespace Pelgar::ORBE::test
