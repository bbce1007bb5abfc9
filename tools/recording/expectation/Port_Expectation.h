// Tools, recording library. The packets that a host must receive from one port when a recording is played, in
// order. Reads the recording by itself, a piece at a time: one object for each reader thread. Blocks on the
// disk.
#pragma once

#include "expectation/Port_Model.h"
#include "stream_format/Piece_Reader.h"

namespace Pelgar::ORBE::recording {

class Port_Expectation {
public:
    // `port` is the API's number, 1..4. Throws like Piece_Reader.
    Port_Expectation(Piece_Reader reader, unsigned port);

    // The next packet, valid until the next call; null after the last. Throws like Piece_Reader.
    const Neuropixels::electrodePacket* next();

    // How far into the recording the last packet was found.
    std::uint64_t bytes_read() const { return m_reader.bytes_read(); }

private:
    Piece_Reader m_reader;
    Port_Model m_model;
};

} // namespace Pelgar::ORBE::recording
