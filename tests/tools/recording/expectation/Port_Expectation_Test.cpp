#include "expectation/Port_Expectation.h"

#include "Hand_Made_Stream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

using namespace Pelgar::ORBE::recording;
using Neuropixels::electrodePacket;
using Pelgar::ORBE::test::Hand_Made_Stream;

constexpr unsigned first_channel[32] = {0,   1,   24,  25,  48,  49,  72,  73,  96,  97,  120,
                                        121, 144, 145, 168, 169, 192, 193, 216, 217, 240, 241,
                                        264, 265, 288, 289, 312, 313, 336, 337, 360, 361};

unsigned sample(std::uint32_t counter, unsigned adc) {
    return (counter * 37 + adc * 101 + 1) & 0x3FF;
}

std::vector<electrodePacket> packets_of(const Hand_Made_Stream& stream, unsigned port) {
    Port_Expectation expectation(Piece_Reader(stream.open()), port);
    std::vector<electrodePacket> packets;
    while (const electrodePacket* const packet = expectation.next()) {
        packets.push_back(*packet);
    }
    return packets;
}

// Whether a row of AP samples is that of the super frame.
testing::AssertionResult is_ap_sample_of(const electrodePacket& packet, std::size_t row,
                                         std::uint32_t super_frame) {
    for (unsigned adc = 0; adc < 32; ++adc) {
        for (unsigned slot = 0; slot < 12; ++slot) {
            const unsigned channel = first_channel[adc] + 2 * slot;
            const auto expected = static_cast<std::int16_t>(sample(13 * super_frame + 1 + slot, adc));
            if (packet.apData[row][channel] != expected) {
                return testing::AssertionFailure() << "row " << row << " channel " << channel;
            }
        }
    }
    return testing::AssertionSuccess();
}

// Whether the slot's channels of the LFP sample come from the super frame.
testing::AssertionResult is_lfp_slot_of(const electrodePacket& packet, unsigned slot,
                                        std::uint32_t super_frame) {
    for (unsigned adc = 0; adc < 32; ++adc) {
        const unsigned channel = first_channel[adc] + 2 * slot;
        if (packet.lfpData[channel] != static_cast<std::int16_t>(sample(13 * super_frame, adc))) {
            return testing::AssertionFailure() << "channel " << channel;
        }
    }
    return testing::AssertionSuccess();
}

Hand_Made_Stream block_of(unsigned stream_id, std::uint32_t first_super_frame = 0) {
    Hand_Made_Stream stream;
    for (std::uint32_t i = 0; i < 1792; ++i) {
        stream.super_frame(stream_id, first_super_frame + i, sample);
    }
    return stream;
}

TEST(PortExpectation, TheFirstPacketHoldsElevenSamplesAndEveryLaterOneTwelve) {
    Hand_Made_Stream stream = block_of(0);
    stream.row(0, {});
    stream.pad();
    const std::vector<electrodePacket> packets = packets_of(stream, 1);
    ASSERT_EQ(packets.size(), 149U);
    for (std::uint32_t row = 0; row < 11; ++row) {
        EXPECT_TRUE(is_ap_sample_of(packets[0], row, row));
    }
    for (const std::int16_t value : packets[0].apData[11]) {
        ASSERT_EQ(value, 0);
    }
    for (std::uint32_t number = 1; number < packets.size(); ++number) {
        for (std::uint32_t row = 0; row < 12; ++row) {
            ASSERT_TRUE(is_ap_sample_of(packets[number], row, 12 * number - 1 + row)) << number;
        }
    }
    for (std::uint32_t number = 0; number < packets.size(); ++number) {
        for (unsigned slot = 0; slot < 12; ++slot) {
            ASSERT_TRUE(is_lfp_slot_of(packets[number], slot, 12 * number + slot)) << number;
        }
        for (std::size_t row = 0; row < 12; ++row) {
            ASSERT_EQ(packets[number].timestamp[row], 0U);
            ASSERT_EQ(packets[number].Status[row], 0U);
        }
    }
}

TEST(PortExpectation, EachPortHasItsOwnPackets) {
    Hand_Made_Stream stream = block_of(2);
    stream.row(2, {});
    stream.pad();
    EXPECT_EQ(packets_of(stream, 1).size(), 0U);
    EXPECT_EQ(packets_of(stream, 2).size(), 0U);
    EXPECT_EQ(packets_of(stream, 3).size(), 149U);
    EXPECT_EQ(packets_of(stream, 4).size(), 0U);
}

TEST(PortExpectation, AFullBlockWaitsForOneMoreRowOfItsPort) {
    Hand_Made_Stream stream = block_of(0);
    stream.row(1, {});
    stream.pad();
    EXPECT_EQ(packets_of(stream, 1).size(), 0U);
}

TEST(PortExpectation, ABlockThatIsNotFullIsDropped) {
    Hand_Made_Stream stream;
    for (std::uint32_t i = 0; i < 1791; ++i) {
        stream.super_frame(0, i, sample);
    }
    stream.pad();
    EXPECT_EQ(packets_of(stream, 1).size(), 0U);
}

TEST(PortExpectation, ALastPieceOfLessThanOneMiBDoesNotCount) {
    Hand_Made_Stream stream = block_of(0);
    stream.row(0, {});
    EXPECT_EQ(packets_of(stream, 1).size(), 0U);
    stream.pad();
    stream.bytes().pop_back();
    EXPECT_EQ(packets_of(stream, 1).size(), 0U);
}

TEST(PortExpectation, ABlockBeginsWithTheFirstFlaggedRow) {
    Hand_Made_Stream stream;
    stream.super_frame(0, 5000, sample, false);
    stream.row(0, {});
    for (std::uint32_t i = 0; i < 1792; ++i) {
        stream.super_frame(0, i, sample);
    }
    stream.row(0, {});
    stream.pad();
    const std::vector<electrodePacket> packets = packets_of(stream, 1);
    ASSERT_EQ(packets.size(), 149U);
    EXPECT_TRUE(is_ap_sample_of(packets[0], 0, 0));
}

TEST(PortExpectation, ABadMarkerCostsTheRestOfItsPiece) {
    Hand_Made_Stream stream = block_of(0);
    stream.row(0, {});
    stream.pad();
    // The row after the full block is in the second piece. Lose it with the one before, and the block is one
    // short; the row that fills it up comes from the next piece.
    const std::size_t last_row = (1792 * 65 - 1) * 16;
    stream.bytes()[last_row] = 0x30;
    EXPECT_EQ(packets_of(stream, 1).size(), 0U);
    Hand_Made_Stream::Words filling{};
    stream.row(0, filling);
    stream.row(0, filling);
    stream.pad();
    EXPECT_EQ(packets_of(stream, 1).size(), 149U);
}

TEST(PortExpectation, ABadMarkerInTheFirstRowCostsTheWholePiece) {
    Hand_Made_Stream stream = block_of(0);
    stream.row(0, {});
    stream.pad();
    stream.bytes()[0] = 0x00;
    EXPECT_EQ(packets_of(stream, 1).size(), 0U);
}

TEST(PortExpectation, WrongTagsAreOfNoAccount) {
    Hand_Made_Stream stream = block_of(0);
    stream.row(0, {});
    stream.pad();
    const std::vector<electrodePacket> expected = packets_of(stream, 1);
    stream.bytes()[16 * 7 + 5] = static_cast<char>(stream.bytes()[16 * 7 + 5] ^ 0xF0);
    const std::vector<electrodePacket> packets = packets_of(stream, 1);
    ASSERT_EQ(packets.size(), expected.size());
    EXPECT_EQ(std::memcmp(packets.data(), expected.data(), packets.size() * sizeof(electrodePacket)), 0);
}

TEST(PortExpectation, ALostRowCostsTheRestOfItsBlockAndStaleValuesRemain) {
    Hand_Made_Stream stream;
    for (std::uint32_t i = 0; i < 3585; ++i) {
        stream.super_frame(0, i, sample);
        if (i == 100) {
            // The last row of super frame 100 is lost. The first row of 101 takes its place, and the next
            // super frame of the block does not begin with a flag.
            stream.bytes().resize(stream.bytes().size() - 16);
        }
    }
    stream.row(0, {});
    stream.pad();
    const std::vector<electrodePacket> packets = packets_of(stream, 1);
    // LFP samples end with super frames 11, 23, ... 95. The next block begins with the next flagged row after
    // 116480 rows, which is super frame 1793, and its LFP samples end with 1799, 1811, ... 3575 (3584 is its
    // last).
    ASSERT_EQ(packets.size(), 8U + 149);

    const electrodePacket& across = packets[8];
    for (std::uint32_t row = 0; row < 5; ++row) {
        EXPECT_TRUE(is_ap_sample_of(across, row, 95 + row));
    }
    // Super frame 100 lost its last AP frame and never completes; the rest of the block is dropped.
    for (std::uint32_t row = 5; row < 11; ++row) {
        EXPECT_TRUE(is_ap_sample_of(across, row, 1793 + row - 5));
    }
    // Row 11 was not written since the packet before.
    EXPECT_TRUE(is_ap_sample_of(across, 11, 94));
    for (unsigned slot = 0; slot < 12; ++slot) {
        EXPECT_TRUE(is_lfp_slot_of(across, slot, slot < 5 ? 96 + slot : 1793 + slot - 5));
    }
}

TEST(PortExpectation, AMissingFlagEndsItsBlock) {
    Hand_Made_Stream stream;
    for (std::uint32_t i = 0; i < 1793; ++i) {
        stream.super_frame(0, i, sample, i != 24);
    }
    stream.pad();
    EXPECT_EQ(packets_of(stream, 1).size(), 2U);
}

TEST(PortExpectation, TheFrameCounterIsExtendedBeyondTwentyBits) {
    // Frame 2^20 is in super frame 80659.
    Hand_Made_Stream stream = block_of(0, 80640);
    stream.row(0, {});
    stream.pad();
    const std::vector<electrodePacket> packets = packets_of(stream, 1);
    ASSERT_EQ(packets.size(), 149U);
    for (std::uint32_t number = 1; number < packets.size(); ++number) {
        for (std::uint32_t row = 0; row < 12; ++row) {
            ASSERT_TRUE(is_ap_sample_of(packets[number], row, 80640 + 12 * number - 1 + row)) << number;
        }
    }
}

TEST(PacketFiller, TimeStampsAreWholeSecondsOfASinglePrecisionSum) {
    Packet_Filler filler;
    const Channel_Values values{};
    // The sum no longer grows when 24,973,586 samples have been stamped.
    for (int i = 0; i < 24'973'585; ++i) {
        filler.add_ap(values);
    }
    filler.add_ap(values);
    const electrodePacket before = filler.add_lfp(values);
    filler.add_ap(values);
    const electrodePacket after = filler.add_lfp(values);
    EXPECT_EQ(before.timestamp[(24'973'586 - 1) % 12], 1023U);
    EXPECT_EQ(after.timestamp[0], 1024U);
}

TEST(PacketFiller, TwoLFPSamplesInARowGiveTwoPacketsWithTheSameAPRows) {
    Packet_Filler filler;
    Channel_Values values{};
    values[5] = 77;
    filler.add_ap(values);
    const electrodePacket first = filler.add_lfp(values);
    values[5] = 78;
    const electrodePacket second = filler.add_lfp(values);
    EXPECT_EQ(first.apData[0][5], 77);
    EXPECT_EQ(second.apData[0][5], 77);
    EXPECT_EQ(first.lfpData[5], 77);
    EXPECT_EQ(second.lfpData[5], 78);
}

TEST(PacketFiller, AThirteenthSampleOverwritesTheFirst) {
    Packet_Filler filler;
    for (std::uint16_t i = 0; i < 13; ++i) {
        Channel_Values values{};
        values[0] = i;
        filler.add_ap(values);
    }
    const electrodePacket packet = filler.add_lfp({});
    EXPECT_EQ(packet.apData[0][0], 12);
    EXPECT_EQ(packet.apData[1][0], 1);
}

} // namespace
