#include "history/Health_History.h"

#include <cmath>

namespace Pelgar::ORBE::view {

namespace {

// What nobody knows adds nothing.
void add_known(double& sum, double value) {
    if (!std::isnan(value)) {
        sum = std::isnan(sum) ? value : sum + value;
    }
}

} // namespace

void Health_History::add(const Health& health) {
    const std::lock_guard lock(m_mutex);
    if (m_health.size() == capacity) {
        m_health.pop_front();
    }
    m_health.push_back(health);
    for (std::size_t stream = 0; stream < stream_count; ++stream) {
        add_known(m_sums[stream].row_gaps, health.streams[stream].row_gaps);
        add_known(m_sums[stream].frame_gaps, health.streams[stream].frame_gaps);
        add_known(m_sums[stream].wrong_tags, health.streams[stream].wrong_tags);
        add_known(m_sums[stream].lost_samples, health.streams[stream].lost_samples);
        m_sums[stream].has_come = m_sums[stream].has_come || health.streams[stream].rate > 0.0;
    }
}

void Health_History::clear() {
    const std::lock_guard lock(m_mutex);
    m_health.clear();
    m_sums = {};
}

Health_Report Health_History::report() const {
    const std::lock_guard lock(m_mutex);
    return {{m_health.begin(), m_health.end()}, m_sums};
}

} // namespace Pelgar::ORBE::view
