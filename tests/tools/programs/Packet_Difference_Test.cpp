#include "Packet_Difference.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace Pelgar::ORBE::recording;
using Neuropixels::electrodePacket;
using Neuropixels::PacketInfo;

TEST(PacketDifference, EqualPacketsHaveNone) {
    const electrodePacket packet{};
    EXPECT_EQ(difference_of(packet, packet), "");
    EXPECT_EQ(difference_of(PacketInfo{}, ADC_Packet{}.samples, ADC_Packet{}), "");
}

TEST(PacketDifference, NamesTheFirstDifferenceInAnElectrodePacket) {
    const electrodePacket expected{};
    electrodePacket received{};
    received.lfpData[9] = -5;
    EXPECT_EQ(difference_of(received, expected), "LFP sample of channel 9 is -5 instead of 0");
    received.apData[11][383] = 7;
    EXPECT_EQ(difference_of(received, expected), "AP sample 11 of channel 383 is 7 instead of 0");
    received.Status[3] = 1;
    EXPECT_EQ(difference_of(received, expected), "status 3 is 1 instead of 0");
    received.timestamp[3] = 2;
    EXPECT_EQ(difference_of(received, expected), "time stamp 3 is 2 instead of 0");
}

TEST(PacketDifference, NamesTheFirstDifferenceInAnADCPacket) {
    const ADC_Packet expected{};
    std::array<std::int16_t, 12> samples{};
    samples[11] = 3;
    EXPECT_EQ(difference_of(PacketInfo{}, samples, expected), "value 11 is 3 instead of 0");
    EXPECT_EQ(difference_of(PacketInfo{0, 0, 9}, samples, expected), "payload length is 9 instead of 0");
    EXPECT_EQ(difference_of(PacketInfo{8, 0, 9}, samples, expected), "time stamp is 8 instead of 0");
    EXPECT_EQ(difference_of(PacketInfo{8, 64, 9}, samples, expected), "status is 64 instead of 0");
}

} // namespace
