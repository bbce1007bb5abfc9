// Layer: demultiplexer. Words of the RHD stream in the order of the wire, filled by the main demux thread and
// read in place by the RHD worker thread.
#pragma once

#include "wire/Main_mux_transfer_buffer_wrapper.h"
#include "wire/Mux_Row_Format.h"

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::demux {

// As many words as the rows of one transfer carry.
inline constexpr std::size_t rhd_piece_capacity =
    transfer_buffer_capacity / mux_row::length * mux_row::payload_words;

struct RHD_Word_Piece {
    std::uint16_t words[rhd_piece_capacity];
    std::size_t count;
    bool follows_loss; // words are missing in front of the first one
};

} // namespace Pelgar::ORBE::demux
