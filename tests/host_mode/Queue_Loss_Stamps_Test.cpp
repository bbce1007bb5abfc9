// What a host sees of an inner queue that became full: the stamps of its packets step over the lost samples.
#include "Captured_Output.h"
#include "Demux_Streams.h"

#include <host_streams/Electrode_Stream.h>
#include <host_streams/Sample_Stamp.h>
#include <host_streams/Sync_Levels.h>
#include <host_streams/Sync_Source.h>
#include <rows/C_Async_PSB_And_RHD_Demux.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <span>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::npoe_adapter;
using namespace Pelgar::ORBE::test;

constexpr std::size_t transfer_bytes = 8192;
constexpr std::size_t block_length = 120;
constexpr std::size_t super_frame_bytes = 65 * 16;

// The main demux thread stands still while 32 transfers find room and ten more do not.
TEST(Queue_Loss_Stamps, StepOverExactlyTheLostSamples) {
    const Sync_Source sync_source;
    const Sync_Levels sync_levels;
    const auto stream = std::make_shared<Electrode_Stream>(1, sync_source, sync_levels);
    Async_NP_And_RHD_Demux demux;
    demux.set_queue_memory(16 << 20U);
    demux.set_transfer_length(transfer_bytes);
    demux.set_block_length(block_length);
    demux.set_sample_listener(stream, 0);
    demux.set_L2_CH_Results_Listener(stream, 0);
    stream->begin_streaming(1);
    stream->begin_run();

    Bytes rows;
    Row_Counters counters;
    for (const Row_Payload& payload : row_payloads(numbered_super_frames(0, 600))) {
        counters.append(rows, 0, payload);
    }
    std::size_t sent = 0;
    const auto push = [&] {
        push_bytes(demux, std::span(rows).subspan(sent, transfer_bytes));
        sent += transfer_bytes;
    };
    std::size_t kept = 0;
    std::size_t resumed = 0;
    captured_output([&] {
        for (int i = 0; i < 32; ++i) {
            push();
        }
        kept = sent;
        for (int i = 0; i < 10; ++i) {
            push();
        }
        resumed = sent;
        demux.start_worker_threads();
        std::thread main_demux_thread([&demux] { demux.run(); });
        demux.wait_until_delivered();
        while (sent + transfer_bytes <= rows.size()) {
            push();
            demux.wait_until_delivered();
        }
        demux.poison_queue();
        main_demux_thread.join();
    });
    ASSERT_EQ(demux.get_lost_byte_count(), resumed - kept);
    ASSERT_EQ(demux.get_lost_super_frame_count(0), 0U) << "of the port's own queue";

    const std::size_t gap_begin = kept / super_frame_bytes;
    const std::size_t gap_end = (resumed + super_frame_bytes - 1) / super_frame_bytes;
    std::vector<std::uint32_t> expected;
    for (std::size_t sample = 0; sample < 600; ++sample) {
        if (sample < gap_begin || sample >= gap_end) {
            expected.push_back(stamp_of(sample));
        }
    }

    // Whole blocks are delivered, of which whole packets are made; the last ones wait for the sync input.
    expected.resize(gap_begin + 2 * block_length);
    std::vector<std::uint32_t> stamps;
    while (stamps.size() < expected.size()) {
        Neuropixels::electrodePacket packet;
        if (stream->take(&packet, 1) == 1) {
            stamps.insert(stamps.end(), std::begin(packet.timestamp), std::end(packet.timestamp));
        }
    }
    EXPECT_EQ(stamps, expected);
    EXPECT_EQ(stream->available(), 0U);
}

} // namespace
