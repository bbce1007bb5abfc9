// Layer: demultiplexer. The amplifier words of an RHD frame turned from the order of the wire, one word of
// every data stream in turn, into one array a stream. Called on the RHD worker thread; never blocks, never
// allocates.
#pragma once

#include "rhd/RHD_Frame.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Pelgar::ORBE::demux {

// `words` holds 35 words for each of the streams, at any address.
void turn_rhd_words(const std::uint16_t* words, std::span<RHD_Stream_Words* const> streams);

// The same, written out plainly: for few streams, where there is no vector code, and to hold that against.
namespace plain {

void turn_rhd_words(const std::uint16_t* words, std::span<RHD_Stream_Words* const> streams);

} // namespace plain

} // namespace Pelgar::ORBE::demux
