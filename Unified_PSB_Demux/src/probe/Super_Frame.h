// Layer: demultiplexer. A probe's super frame taken as a whole: 65 rows of seven words that hold one AP
// sample of every channel and a twelfth of an LFP sample. Called on the NP worker threads; never blocks,
// never allocates. `bytes` points to 910 of them, at any address; nothing behind them is read.
#pragma once

#include "probe/I_L2_Demux_CH_Results.h"
#include "wire/PSB_Format.h"

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::demux::super_frame {

// Whether the first word carries the start flag.
bool has_start_flag(const unsigned char* bytes);

// Whether it does, and every word carries the tag of its lane.
bool is_in_order(const unsigned char* bytes);

// The 20-bit counter of a frame.
std::uint32_t frame_counter(const unsigned char* bytes, std::size_t frame);

// Whether the thirteen frames' counters run on from `first`, without a wrap.
bool counts_on(const unsigned char* bytes, std::uint32_t first);

// Puts the first frame's 32 samples, which are LFP samples, to the channels of the slot (0..11).
void sort_lfp(const unsigned char* bytes, std::uint16_t (&channels)[channel_count], std::size_t slot);

// Puts the other twelve frames' samples, which are AP samples, to all 384 channels.
void sort_ap(const unsigned char* bytes, std::uint16_t (&channels)[channel_count]);

// The same, written out plainly: what is compiled where there is no vector code, and what that is held
// against.
namespace plain {

bool is_in_order(const unsigned char* bytes);
void sort_ap(const unsigned char* bytes, std::uint16_t (&channels)[channel_count]);

} // namespace plain

} // namespace Pelgar::ORBE::demux::super_frame
