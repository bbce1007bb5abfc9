#include "packets/C_MT_NP_PXI_Queue.h"

#include "Log_Capture.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

using Neuropixels::electrodePacket;
using Pelgar::ORBE::npoe_adapter::MT_NP_PXI_Queue;
using Pelgar::ORBE::test::Log_Capture;

electrodePacket packet(std::uint32_t number) {
    electrodePacket made{};
    made.timestamp[0] = number;
    return made;
}

TEST(MTNPPXIQueue, PeekLeavesThePacketAndPopRemovesIt) {
    MT_NP_PXI_Queue queue;
    queue.push(packet(1));
    queue.push(packet(2));
    EXPECT_EQ(queue.size(), 2U);
    EXPECT_EQ(queue.peek_xfer_buffer_from_queue()->timestamp[0], 1U);
    EXPECT_EQ(queue.peek_xfer_buffer_from_queue()->timestamp[0], 1U);
    queue.pop();
    EXPECT_EQ(queue.peek_xfer_buffer_from_queue()->timestamp[0], 2U);
    EXPECT_EQ(queue.size(), 1U);
}

TEST(MTNPPXIQueue, The502ndPacketIsDroppedAndLoggedOnceUntilTheCounterWraps) {
    const Log_Capture log;
    MT_NP_PXI_Queue queue;
    for (std::uint32_t i = 0; i < 501; ++i) {
        queue.push(packet(i));
    }
    EXPECT_EQ(queue.size(), 501U);
    EXPECT_EQ(log.count("MT_NP_PXI_Queue overflow"), 0);
    queue.push(packet(501));
    EXPECT_EQ(queue.size(), 501U);
    EXPECT_EQ(log.count(0, "MT_NP_PXI_Queue overflow"), 1);
    for (int drop = 2; drop <= 256; ++drop) {
        queue.push(packet(0));
    }
    EXPECT_EQ(log.count("MT_NP_PXI_Queue overflow"), 1);
    queue.push(packet(0));
    EXPECT_EQ(log.count("MT_NP_PXI_Queue overflow"), 2) << "the 257th drop is logged again";

    for (std::uint32_t i = 0; i < 501; ++i) {
        ASSERT_EQ(queue.peek_xfer_buffer_from_queue()->timestamp[0], i);
        queue.pop();
    }
}

TEST(MTNPPXIQueue, AllQueuesShareOneOverflowCounter) {
    const Log_Capture log;
    MT_NP_PXI_Queue first;
    MT_NP_PXI_Queue second;
    for (int i = 0; i < 502; ++i) {
        first.push(packet(0));
        second.push(packet(0));
    }
    EXPECT_EQ(log.count("MT_NP_PXI_Queue overflow"), 1);
}

TEST(MTNPPXIQueue, ExitWakesABlockedReaderAndIsLogged) {
    const Log_Capture log;
    MT_NP_PXI_Queue queue;
    std::thread reader([&] { EXPECT_NE(queue.peek_xfer_buffer_from_queue(), nullptr); });
    queue.signal_exit();
    reader.join();
    EXPECT_TRUE(queue.signalled_for_exit());
    EXPECT_EQ(log.count(0, "MT_NP_PXI_Queue::peek_xfer_buffer_from_queue signalled for exit"), 1);
}

TEST(MTNPPXIQueue, AfterExitAScratchPacketIsAnsweredThoughOneIsQueued) {
    MT_NP_PXI_Queue queue;
    queue.push(packet(7));
    EXPECT_FALSE(queue.signalled_for_exit());
    queue.signal_exit();
    const electrodePacket* scratch = queue.peek_xfer_buffer_from_queue();
    ASSERT_NE(scratch, nullptr);
    EXPECT_EQ(scratch->timestamp[0], 0U);
    EXPECT_EQ(queue.size(), 1U);
}

} // namespace
