#include "Sync_Model.h"

namespace Pelgar::ORBE::road_model {

namespace {

// 8.7 s.
constexpr std::uint64_t remembered = 262144;

} // namespace

void Sync_Model::restart(std::uint32_t streaming) {
    m_streaming = streaming;
    m_changes.clear();
    m_end = 0;
}

bool Sync_Model::record(std::uint64_t sample, std::uint32_t inputs) {
    const bool high = (inputs & m_wiring.inputs) != 0;
    m_changes.emplace_back(sample, high);
    m_end = sample + 1;
    return high || clock(sample);
}

bool Sync_Model::level(std::uint32_t streaming, std::uint64_t sample) const {
    return clock(sample) || (m_wiring.inputs != 0 && input(streaming, sample));
}

bool Sync_Model::clock(std::uint64_t sample) const {
    return m_wiring.clock_period != 0 && sample % m_wiring.clock_period < m_wiring.clock_period / 2;
}

// What is too old, or still to come, has the level that came last.
bool Sync_Model::input(std::uint32_t streaming, std::uint64_t sample) const {
    if (streaming != m_streaming || m_changes.empty()) {
        return false;
    }
    if (sample >= m_end || sample + remembered < m_end) {
        return m_changes.back().second;
    }
    bool high = false;
    for (const auto& [from, level] : m_changes) {
        if (from > sample) {
            break;
        }
        high = level;
    }
    return high;
}

} // namespace Pelgar::ORBE::road_model
