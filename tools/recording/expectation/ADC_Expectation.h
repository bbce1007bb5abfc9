// Tools, recording library. The ADC packets that a host must receive when a recording is played, in order.
// Reads the recording by itself, a piece at a time. Blocks on the disk.
#pragma once

#include "expectation/ADC_Model.h"
#include "stream_format/Piece_Reader.h"

namespace Pelgar::ORBE::recording {

class ADC_Expectation {
public:
    // Throws like Piece_Reader. `streams` as for ADC_Model.
    explicit ADC_Expectation(Piece_Reader reader, unsigned streams = 0);

    // The next packet, valid until the next call; null after the last. Throws like Piece_Reader.
    const ADC_Packet* next();

    // How far into the recording the last packet was found.
    std::uint64_t bytes_read() const { return m_reader.bytes_read(); }

private:
    Piece_Reader m_reader;
    ADC_Model m_model;
};

} // namespace Pelgar::ORBE::recording
