#include "packets/C_MT_RHD_PXI_Queue.h"

#include "Log_Capture.h"

#include <gtest/gtest.h>

namespace {

using Pelgar::ORBE::npoe_adapter::ADC_Packet_Record;
using Pelgar::ORBE::npoe_adapter::MT_RHD_PXI_Queue;
using Pelgar::ORBE::test::Log_Capture;

TEST(MTRHDPXIQueue, ConstructorSaysSo) {
    testing::internal::CaptureStdout();
    const MT_RHD_PXI_Queue queue;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "MT_RHD_PXI_Queue ctor \n");
    EXPECT_EQ(queue.size(), 0U);
}

TEST(MTRHDPXIQueue, OverflowIsLoggedUnderTheProbeQueuesNameAndCountedApart) {
    const Log_Capture log;
    MT_RHD_PXI_Queue queue;
    for (int i = 0; i < 501 + 257; ++i) {
        ADC_Packet_Record record{};
        record.status = static_cast<std::uint16_t>(i);
        queue.push(record);
    }
    EXPECT_EQ(queue.size(), 501U);
    EXPECT_EQ(log.count(0, "MT_NP_PXI_Queue overflow"), 2);
    EXPECT_EQ(queue.peek_xfer_buffer_from_queue()->status, 0);
}

TEST(MTRHDPXIQueue, ExitIsLoggedUnderItsOwnName) {
    const Log_Capture log;
    MT_RHD_PXI_Queue queue;
    queue.signal_exit();
    EXPECT_NE(queue.peek_xfer_buffer_from_queue(), nullptr);
    EXPECT_EQ(log.count(0, "MT_RHD_PXI_Queue::peek_xfer_buffer_from_queue signalled for exit"), 1);
}

} // namespace
