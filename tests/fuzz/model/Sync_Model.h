// Road model: the level of the sync input at each sample, as the RHD stream brings it.
#pragma once

#include "Road_Settings.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::road_model {

class Sync_Model {
public:
    explicit Sync_Model(const Sync_Wiring& wiring) : m_wiring(wiring) {}

    // The next frame is the first of another time of streaming.
    void restart(std::uint32_t streaming);

    // What the inputs show from this sample on. Answers the sync level there.
    bool record(std::uint64_t sample, std::uint32_t inputs);

    // The level as a probe's packet shows it.
    bool level(std::uint32_t streaming, std::uint64_t sample) const;

private:
    bool clock(std::uint64_t sample) const;
    bool input(std::uint32_t streaming, std::uint64_t sample) const;

    Sync_Wiring m_wiring;
    std::uint32_t m_streaming = 0;
    std::vector<std::pair<std::uint64_t, bool>> m_changes; // the level from a sample on
    std::uint64_t m_end = 0;
};

} // namespace Pelgar::ORBE::road_model
