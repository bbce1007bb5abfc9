#include "history/Health_History.h"

namespace Pelgar::ORBE::view {

void Health_History::add(const Health& health) {
    const std::lock_guard lock(m_mutex);
    if (m_health.size() == capacity) {
        m_health.pop_front();
    }
    m_health.push_back(health);
}

void Health_History::clear() {
    const std::lock_guard lock(m_mutex);
    m_health.clear();
}

std::vector<Health> Health_History::all() const {
    const std::lock_guard lock(m_mutex);
    return {m_health.begin(), m_health.end()};
}

} // namespace Pelgar::ORBE::view
