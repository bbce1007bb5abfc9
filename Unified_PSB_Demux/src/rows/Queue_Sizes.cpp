#include "rows/Queue_Sizes.h"

#include "common/Physical_Memory.h"
#include "rhd/RHD_Word_Piece.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"
#include "wire/Mux_Row_Format.h"
#include "wire/NP_Block_Buffer.h"

#include <algorithm>
#include <bit>

namespace Pelgar::ORBE::demux {

namespace {

constexpr std::uint64_t most_queue_memory = std::uint64_t{2} << 30U;

// Chosen so that in 2 GiB each queue finds room for a power of two of its records: 1,024 transfers, 128
// blocks a port, 256 pieces.
constexpr std::uint64_t all_parts = 2000;
constexpr std::uint64_t main_parts = 1001;
constexpr std::uint64_t np_parts = 195;
constexpr std::uint64_t rhd_parts = 219;
static_assert(main_parts + np_port_count * np_parts + rhd_parts == all_parts);

// The memory of a record that is filled in part is used in part, but it is reserved whole, which some systems
// count as well. So it counts as filled to a quarter at least.
constexpr std::size_t counted_bytes(std::size_t filled, std::size_t whole) {
    return std::max(filled, whole / 4);
}

// A queue goes round its ring of records, so that in the end each of them is in use; their number is a power
// of two.
std::size_t records(std::uint64_t memory, std::uint64_t parts, std::size_t record_bytes) {
    const std::uint64_t count = memory / all_parts * parts / record_bytes;
    return static_cast<std::size_t>(std::max<std::uint64_t>(std::bit_floor(count), 2));
}

} // namespace

std::uint64_t default_queue_memory() {
    const std::uint64_t memory = physical_memory();
    return memory == 0 ? most_queue_memory : std::min(memory / 4, most_queue_memory);
}

Queue_Sizes queue_sizes(std::uint64_t memory, std::size_t transfer_bytes, std::size_t block_bytes) {
    return {
        .transfers = records(memory, main_parts,
                             counted_bytes(transfer_bytes, sizeof(Main_mux_transfer_buffer_wrapper))),
        .np_blocks = records(memory, np_parts, counted_bytes(block_bytes, sizeof(NP_Block_Buffer))),
        .rhd_pieces = records(memory, rhd_parts, sizeof(RHD_Word_Piece)),
    };
}

} // namespace Pelgar::ORBE::demux
