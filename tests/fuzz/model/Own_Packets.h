// Road model: the electrode packets of the box's own way, of one port.
#pragma once

#include "Gain_Model.h"
#include "Road_Output.h"

#include <cstddef>
#include <cstdint>
#include <deque>

namespace Pelgar::ORBE::road_model {

class Own_Packets {
public:
    Own_Packets(Process_Counters& process, Told& told) : m_process(process), m_told(told) {}

    void take(Band band, const Channels& values);

    std::deque<Probe_Packet> queue;

private:
    Process_Counters& m_process;
    Told& m_told;
    Probe_Packet m_packet;
    std::size_t m_row = 0;
    float m_seconds = 0.0F;
};

} // namespace Pelgar::ORBE::road_model
