// Road model: a port in host mode. A super frame is taken as a whole or not at all, and its number is known
// beyond the 20 bits of its counter.
#pragma once

#include "Gain_Model.h"
#include "Host_Packets.h"
#include "Probe_Frames.h"
#include "Road_Output.h"
#include "Road_Settings.h"

#include <array>
#include <cstdint>

namespace Pelgar::ORBE::road_model {

class Host_Probe {
public:
    Host_Probe(Listening listening, Told& told) : m_listening(listening), m_told(told) {}

    // Behind so many super frames that are known to be lost.
    void take_block(const Bytes& block, std::uint32_t lost_before);

    Host_Packets packets;
    Gain_Model gain{true};
    Damage damage;

private:
    using Super_Frame = std::array<Probe_Frame, frames_per_super_frame>;

    void take(const Super_Frame& frames);
    void drop(const Super_Frame& frames);
    void check_continuity(std::uint32_t first_counter);
    std::uint64_t number_of(std::uint32_t first_counter);
    void deliver(Band band, Channels& values);

    Listening m_listening;
    Told& m_told;
    Channels m_ap{};
    Channels m_lfp{};
    std::uint64_t m_next_frame = 0;   // as the probe counts, without wraps
    std::uint32_t m_next_counter = 0; // as it shows, of super frames that were dropped, too
    std::uint64_t m_lfp_sample = 0;
    bool m_lfp_is_unfinished = false;
};

} // namespace Pelgar::ORBE::road_model
