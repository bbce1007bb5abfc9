#include "packets/L2_CH_Results_NP_PXI_Format_Converter.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <numeric>

namespace {

using Neuropixels::electrodePacket;
using Pelgar::ORBE::npoe_adapter::L2_CH_Results_NP_PXI_Format_Converter;

class Converter : public testing::Test {
protected:
    void ap(std::uint16_t first_value) {
        std::uint16_t values[384];
        std::iota(std::begin(values), std::end(values), first_value);
        m_converter.publish_ap_ch_data(values);
    }

    void lfp(std::uint16_t first_value) {
        std::uint16_t values[384];
        std::iota(std::begin(values), std::end(values), first_value);
        m_converter.publish_lp_ch_data(values);
    }

    electrodePacket take() {
        const electrodePacket packet = *m_converter.queue().peek_xfer_buffer_from_queue();
        m_converter.queue().pop();
        return packet;
    }

    L2_CH_Results_NP_PXI_Format_Converter m_converter;
};

TEST(ConverterConstruction, PrintsThePacketSize) {
    testing::internal::CaptureStdout();
    const L2_CH_Results_NP_PXI_Format_Converter converter;
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "L2_CH_Results_NP_PXI_Format_Converter ctor\nsizeof(m_ep)) : 10056\n");
}

TEST_F(Converter, TwelveApSetsAndTheLfpSetMakeAPacket) {
    for (std::uint16_t row = 0; row < 12; ++row) {
        ap(static_cast<std::uint16_t>(1000 * row));
        EXPECT_EQ(m_converter.queue().size(), 0U);
    }
    lfp(50000);
    ASSERT_EQ(m_converter.queue().size(), 1U);
    const electrodePacket packet = take();
    for (int row = 0; row < 12; ++row) {
        for (int channel = 0; channel < 384; ++channel) {
            ASSERT_EQ(packet.apData[row][channel], static_cast<std::int16_t>(1000 * row + channel));
        }
        EXPECT_EQ(packet.timestamp[row], 0U) << "the first packet's stamps are all 0";
        EXPECT_EQ(packet.Status[row], 0);
    }
    for (int channel = 0; channel < 384; ++channel) {
        ASSERT_EQ(packet.lfpData[channel], static_cast<std::int16_t>(50000 + channel));
    }
}

TEST_F(Converter, ValuesAreCopiedBitForBit) {
    ap(0xFFFF);
    lfp(0x8000);
    const electrodePacket packet = take();
    EXPECT_EQ(packet.apData[0][0], -1);
    EXPECT_EQ(packet.apData[0][1], 0);
    EXPECT_EQ(packet.lfpData[0], -32768);
}

TEST_F(Converter, LfpClosesAPacketEarlyAndTheNextBeginsAtItsFirstRow) {
    ap(1);
    ap(2);
    lfp(3);
    ap(4);
    lfp(5);
    const electrodePacket first = take();
    EXPECT_EQ(first.apData[0][0], 1);
    EXPECT_EQ(first.apData[1][0], 2);
    EXPECT_EQ(first.apData[2][0], 0) << "rows that were never written are zero";
    const electrodePacket second = take();
    EXPECT_EQ(second.apData[0][0], 4);
    EXPECT_EQ(second.apData[1][0], 2) << "rows that were not rewritten keep their old values";
    EXPECT_EQ(second.lfpData[0], 5);
}

TEST_F(Converter, TwoLfpSetsInARowYieldTheSameApData) {
    ap(9);
    lfp(1);
    lfp(2);
    const electrodePacket first = take();
    const electrodePacket second = take();
    EXPECT_EQ(std::memcmp(first.apData, second.apData, sizeof(first.apData)), 0);
    EXPECT_EQ(std::memcmp(first.timestamp, second.timestamp, sizeof(first.timestamp)), 0);
    EXPECT_EQ(second.lfpData[0], 2);
    EXPECT_EQ(m_converter.completed_packet_count(), 2U);
}

TEST_F(Converter, TheThirteenthApSetWrapsToTheFirstRow) {
    for (std::uint16_t row = 0; row < 13; ++row) {
        ap(static_cast<std::uint16_t>(100 + row));
    }
    lfp(0);
    const electrodePacket packet = take();
    EXPECT_EQ(packet.apData[0][0], 112);
    EXPECT_EQ(packet.apData[1][0], 101);
}

// The stamps follow a 32-bit float that grows by one sample period with rounding at each step.
TEST_F(Converter, StampsAreTheWholeSecondsOfARunningFloat) {
    const auto period = std::bit_cast<float>(0x380BCF65U);
    float time = 0.0F;
    std::uint16_t values[384] = {};
    for (int packet_number = 0; packet_number < 6000; ++packet_number) {
        std::uint32_t expected[12];
        for (std::uint32_t& stamp : expected) {
            stamp = static_cast<std::uint32_t>(time);
            time += period;
            m_converter.publish_ap_ch_data(values);
        }
        m_converter.publish_lp_ch_data(values);
        const electrodePacket packet = take();
        ASSERT_EQ(std::memcmp(packet.timestamp, expected, sizeof(expected)), 0) << "packet " << packet_number;
    }
    EXPECT_EQ(static_cast<std::uint32_t>(time), 2U);
}

TEST_F(Converter, StampReads1024OnceTheFloatStopsGrowing) {
    constexpr std::uint32_t last_growing_sample = 24'973'586;
    std::uint16_t values[384] = {};
    for (std::uint32_t sample = 0; sample < last_growing_sample; ++sample) {
        m_converter.publish_ap_ch_data(values);
    }
    m_converter.publish_lp_ch_data(values);
    const electrodePacket before = take();
    const std::uint32_t last_row = (last_growing_sample - 1) % 12;
    EXPECT_EQ(before.timestamp[last_row], 1023U);
    for (int sample = 0; sample < 12; ++sample) {
        m_converter.publish_ap_ch_data(values);
    }
    m_converter.publish_lp_ch_data(values);
    const electrodePacket after = take();
    for (const std::uint32_t stamp : after.timestamp) {
        EXPECT_EQ(stamp, 1024U);
    }
}

} // namespace
