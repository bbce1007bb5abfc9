// Layer: demultiplexer. The payloads of one probe port, gathered by the main demux thread and decoded by the
// port's NP worker thread.
#pragma once

#include "wire/PSB_Format.h"

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::demux {

inline constexpr std::size_t np_block_super_frame_count = 1792;
inline constexpr std::size_t np_block_capacity = np_block_super_frame_count * psb::bytes_per_super_frame;

// A plain record: whole super frames, back to back, the number of bytes that are used, and the number of
// super frames that were lost in front of them because a queue was full. A fill of 0 marks the poison block
// that ends a worker.
struct NP_Block_Buffer {
    std::uint8_t data[np_block_capacity];
    std::uint32_t fill;
    std::uint32_t lost_before;
};

static_assert(np_block_capacity == 1'630'720);

} // namespace Pelgar::ORBE::demux
