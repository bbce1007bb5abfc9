#include "Held_Pump.h"

#include <cstddef>

namespace Pelgar::ORBE::test {

Held_Pump::Held_Pump() : m_host(std::this_thread::get_id()) {
    m_waiter.on_wait([this](std::size_t /*waits*/) {
        if (std::this_thread::get_id() != m_host) {
            wait();
        }
    });
}

Held_Pump::~Held_Pump() {
    set_holding(false);
}

bool Held_Pump::is_held() const {
    const std::lock_guard lock(m_mutex);
    return m_is_held;
}

void Held_Pump::let_on() {
    const std::lock_guard lock(m_mutex);
    m_is_held = false;
    m_changed.notify_all();
}

void Held_Pump::set_holding(bool holding) {
    const std::lock_guard lock(m_mutex);
    m_is_holding = holding;
    m_changed.notify_all();
}

void Held_Pump::wait() {
    std::unique_lock lock(m_mutex);
    m_is_held = true;
    m_changed.wait(lock, [this] { return !m_is_holding || !m_is_held; });
    m_is_held = false;
}

} // namespace Pelgar::ORBE::test
