#include "rows/Queue_Sizes.h"

#include "rhd/RHD_Word_Piece.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"
#include "wire/Mux_Row_Format.h"
#include "wire/NP_Block_Buffer.h"

#include <common/Physical_Memory.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::demux;

constexpr std::uint64_t gib = std::uint64_t{1} << 30U;

std::uint64_t all_records(const Queue_Sizes& sizes) {
    return sizes.transfers * sizeof(Main_mux_transfer_buffer_wrapper) +
           np_port_count * sizes.np_blocks * sizeof(NP_Block_Buffer) +
           sizes.rhd_pieces * sizeof(RHD_Word_Piece);
}

TEST(Queue_Sizes, TwoGibibytesAreSecondsOfAFullBox) {
    const Queue_Sizes sizes = queue_sizes(2 * gib, transfer_buffer_capacity, np_block_capacity);
    EXPECT_EQ(sizes.transfers, 1024U);
    EXPECT_EQ(sizes.np_blocks, 128U);
    EXPECT_EQ(sizes.rhd_pieces, 256U);
    EXPECT_LE(all_records(sizes), 2 * gib);
}

TEST(Queue_Sizes, RecordsThatAreFilledInPartCountAsAQuarterAtLeast) {
    const Queue_Sizes sizes = queue_sizes(2 * gib, 128 * 1024, 120 * psb::bytes_per_super_frame);
    EXPECT_EQ(sizes.transfers, 4096U);
    EXPECT_EQ(sizes.np_blocks, 512U);
    EXPECT_EQ(sizes.rhd_pieces, 256U);
    EXPECT_LE(all_records(sizes), 8 * gib);
}

TEST(Queue_Sizes, AnyMemoryIsKeptTo) {
    constexpr std::uint64_t least = 32 << 20U; // two records in each queue
    for (std::uint64_t memory = least; memory <= 2 * gib; memory += memory / 7) {
        const Queue_Sizes sizes = queue_sizes(memory, transfer_buffer_capacity, np_block_capacity);
        EXPECT_LE(all_records(sizes), memory) << memory;
        EXPECT_GE(4 * all_records(sizes), memory) << memory;
    }
    EXPECT_EQ(queue_sizes(0, transfer_buffer_capacity, np_block_capacity).transfers, 2U);
}

TEST(Queue_Sizes, AQuarterOfTheMachineAndNoMoreThanTwoGibibytes) {
    ASSERT_GT(physical_memory(), 64U << 20U);
    EXPECT_EQ(default_queue_memory(), std::min(physical_memory() / 4, 2 * gib));
}

} // namespace
