// Tools, recording library. What the library makes of one port's part of the stream: fed with the pieces of a
// recording, it gives the packets that a host receives, in order. Holds two blocks of the port, whatever the
// stream is like.
#pragma once

#include "expectation/Block_Gatherer.h"
#include "expectation/Packet_Filler.h"

namespace Pelgar::ORBE::recording {

class Port_Model {
public:
    // `port` is the API's number, 1..4.
    explicit Port_Model(unsigned port);

    // Takes the next piece of the stream. All packets that were due must have been taken.
    void feed(std::span<const std::uint8_t> piece);

    // The next packet, valid until the next call; null when the next piece is needed.
    const Neuropixels::electrodePacket* next();

private:
    Block_Gatherer m_gatherer;
    Frame_Cursor m_frames;
    Channel_Sorter m_sorter;
    Packet_Filler m_filler;
};

} // namespace Pelgar::ORBE::recording
