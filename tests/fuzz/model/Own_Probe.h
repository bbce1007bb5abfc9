// Road model: a port in the box's own way. Every frame is used, where its own counter puts it.
#pragma once

#include "Gain_Model.h"
#include "Own_Packets.h"
#include "Probe_Frames.h"
#include "Road_Output.h"
#include "Road_Settings.h"

#include <cstdint>

namespace Pelgar::ORBE::road_model {

class Own_Probe {
public:
    Own_Probe(Listening listening, Process_Counters& process, Told& told);

    void take_block(const Bytes& block);

    // The stream starts anew.
    void resync();

    Own_Packets packets;
    Gain_Model gain{false};
    Damage damage;

private:
    void take_frame(const Probe_Frame& frame);
    std::uint32_t long_counter(const Probe_Frame& frame);
    void deliver(Band band, Channels& values);

    Listening m_listening;
    Told& m_told;
    Channels m_ap{};
    Channels m_lfp{};
    std::uint32_t m_last_counter = 0xFFFFFFFF;
    std::uint32_t m_last_long_counter = 0xFFFFFFFF;
    std::uint32_t m_last_upper_half = 0;
    std::uint32_t m_wraps = 0; // of 16 bits
};

} // namespace Pelgar::ORBE::road_model
