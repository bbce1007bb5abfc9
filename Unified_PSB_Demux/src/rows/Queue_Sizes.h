// Layer: demultiplexer. How many records the inner queues may hold, so that stages which fall behind cannot
// use up the machine's memory. Set up on the host's threads.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::demux {

struct Queue_Sizes {
    std::size_t transfers;  // of the main queue
    std::size_t np_blocks;  // of each NP worker's queue
    std::size_t rhd_pieces; // of the RHD worker's
};

// What all inner queues may hold together: a quarter of the machine's memory, but at most 2 GiB.
std::uint64_t default_queue_memory();

// Divides the memory among the queues: half of it is the main queue's. `transfer_bytes` and `block_bytes` are
// what transfers and blocks are filled with. Each queue may hold two records at least.
Queue_Sizes queue_sizes(std::uint64_t memory, std::size_t transfer_bytes, std::size_t block_bytes);

} // namespace Pelgar::ORBE::demux
