#include "Waiter_Guard.h"

#include "common/Waiting.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

// What a wait costs in real time: enough for the other threads to get on.
constexpr auto token_wait = std::chrono::microseconds(200);

} // namespace

Waiter_Guard::Waiter_Guard() {
    replace_waiter([this](std::chrono::milliseconds duration) { wait(duration); });
}

Waiter_Guard::~Waiter_Guard() {
    replace_waiter({});
}

std::vector<std::chrono::milliseconds> Waiter_Guard::waits() const {
    const std::lock_guard lock(m_mutex);
    return m_waits;
}

std::size_t Waiter_Guard::count(std::chrono::milliseconds duration) const {
    const std::lock_guard lock(m_mutex);
    return static_cast<std::size_t>(std::count(m_waits.begin(), m_waits.end(), duration));
}

void Waiter_Guard::on_wait(std::function<void(std::size_t)> action) {
    const std::lock_guard lock(m_mutex);
    m_action = std::move(action);
}

void Waiter_Guard::wait(std::chrono::milliseconds duration) {
    std::function<void(std::size_t)> action;
    std::size_t number = 0;
    {
        const std::lock_guard lock(m_mutex);
        m_waits.push_back(duration);
        number = m_waits.size();
        action = m_action;
    }
    std::this_thread::sleep_for(token_wait);
    if (action) {
        action(number);
    }
}

} // namespace Pelgar::ORBE::test
