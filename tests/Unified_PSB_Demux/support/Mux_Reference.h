// Test support: what must become of a sequence of transfer buffers, worked out row by row and word by word
// from the wire formats, slowly and without regard to the code it is compared with.
#pragma once

#include "Demux_Streams.h"
#include "NP_Reference_Decoder.h"
#include "Recording_Listeners.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class Mux_Reference {
public:
    explicit Mux_Reference(std::size_t rhd_stream_count) : m_rhd_stream_count(rhd_stream_count) {}

    void feed_transfer_buffer(const Bytes& buffer);

    // The frames that the RHD words hold in whole.
    std::vector<Rhd_Frame_Copy> rhd_frames() const;

    // What the main demux thread prints about rows, in order.
    std::string row_lines;
    // How often it prints that a buffer's size is no multiple of a row's.
    int incompatible_sizes = 0;
    // Log lines about unknown ids, in order.
    std::vector<std::string> unknown_ids;

    std::array<NP_Reference_Decoder, 4> ports;
    std::array<std::size_t, 4> port_rows{};
    std::size_t rhd_rows = 0;

private:
    void take_row(const Bytes& row);

    std::size_t m_rhd_stream_count;
    std::array<unsigned, 16> m_last_counter = {255, 255, 255, 255, 255, 255, 255, 255,
                                               255, 255, 255, 255, 255, 255, 255, 255};
    std::size_t m_row_index = 0;
    std::array<Bytes, 4> m_blocks;
    Words m_rhd_words;
};

} // namespace Pelgar::ORBE::test
