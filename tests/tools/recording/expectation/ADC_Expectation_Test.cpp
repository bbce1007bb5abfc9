#include "expectation/ADC_Expectation.h"

#include "Hand_Made_Stream.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Pelgar::ORBE::recording;
using Pelgar::ORBE::test::Hand_Made_Stream;
using Samples = std::array<std::int16_t, 12>;

constexpr std::array<std::uint16_t, 8> inputs = {0, 0xFFFF, 0x8000, 0x8001, 0x7FFF, 1, 2, 3};

std::vector<ADC_Packet> packets_of(Hand_Made_Stream& stream, unsigned streams = 0) {
    stream.pad();
    ADC_Expectation expectation(Piece_Reader(stream.open()), streams);
    std::vector<ADC_Packet> packets;
    while (const ADC_Packet* const packet = expectation.next()) {
        packets.push_back(*packet);
    }
    return packets;
}

std::vector<std::uint16_t> statuses_of(const std::vector<std::uint32_t>& ttl_words) {
    Hand_Made_Stream stream;
    for (const std::uint32_t ttl : ttl_words) {
        stream.rhd(Hand_Made_Stream::rhd_frame(inputs, ttl));
    }
    stream.rhd(std::vector<std::uint16_t>(6, 0)); // what does not fill a row yet goes out
    std::vector<std::uint16_t> statuses;
    for (const ADC_Packet& packet : packets_of(stream)) {
        statuses.push_back(packet.status);
    }
    return statuses;
}

TEST(ADCExpectation, InputsAreTurnedFromOffsetBinary) {
    Hand_Made_Stream stream;
    stream.rhd(Hand_Made_Stream::rhd_frame(inputs, 0));
    stream.rhd({0});
    const std::vector<ADC_Packet> packets = packets_of(stream);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].samples, (Samples{-32768, 32767, 0, 1, -1, -32767, -32766, -32765, 0, 0, 0, 0}));
    EXPECT_EQ(packets[0].status, 0);
}

TEST(ADCExpectation, TheStatusHoldsTheUpperInputsAndFlagsAChange) {
    EXPECT_EQ(statuses_of({0x300, 0x300, 0x3FF, 0, 0xFE00}),
              (std::vector<std::uint16_t>{0x00C0, 0x0080, 0x00C0, 0x0040, 0x3FC0}));
}

TEST(ADCExpectation, InputsBeyondSixteenCountAsAChangeInEveryFrame) {
    EXPECT_EQ(statuses_of({0x10000, 0x10000, 0}), (std::vector<std::uint16_t>{0x4040, 0x4040, 0x0000}));
}

TEST(ADCExpectation, AnIncompleteFrameIsNotDelivered) {
    Hand_Made_Stream stream;
    std::vector<std::uint16_t> words = Hand_Made_Stream::rhd_frame(inputs, 0);
    words.insert(words.end(), words.begin(), words.begin() + 15);
    stream.rhd(words); // 35 words, five whole rows
    EXPECT_EQ(packets_of(stream).size(), 1U);
}

TEST(ADCExpectation, WordsBeforeTheMagicAreSkipped) {
    Hand_Made_Stream stream;
    stream.rhd({1, 2, 3, 0x3813, 5});
    stream.rhd(Hand_Made_Stream::rhd_frame(inputs, 0));
    stream.rhd({0, 0, 0});
    const std::vector<ADC_Packet> packets = packets_of(stream);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].samples[0], -32768);
}

TEST(ADCExpectation, AWrongMagicTakesItsFourWordsAlong) {
    // The true frame begins within the four words of the false one and is lost with them; the one after
    // counts.
    Hand_Made_Stream stream;
    stream.rhd({0x2A53, 0});
    stream.rhd(Hand_Made_Stream::rhd_frame(inputs, 0));
    stream.rhd(Hand_Made_Stream::rhd_frame({7}, 0));
    stream.rhd({0, 0, 0, 0, 0, 0, 0});
    const std::vector<ADC_Packet> packets = packets_of(stream);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].samples[0], static_cast<std::int16_t>(7 - 32768));
}

TEST(ADCExpectation, AFrameMayLieAcrossTwoPieces) {
    Hand_Made_Stream stream;
    while (stream.bytes().size() != (1U << 20) - 16) {
        stream.row(9, {});
    }
    stream.rhd(Hand_Made_Stream::rhd_frame(inputs, 0));
    stream.rhd({0});
    EXPECT_EQ(packets_of(stream).size(), 1U);
}

TEST(ADCExpectation, EnabledStreamsLieBetweenTimeStampAndInputs) {
    Hand_Made_Stream stream;
    const std::vector<std::uint16_t> plain = Hand_Made_Stream::rhd_frame(inputs, 0x300);
    std::vector<std::uint16_t> words(plain.begin(), plain.begin() + 6);
    words.insert(words.end(), 3 * 35 + 3, 0x1234); // three streams and their filler
    words.insert(words.end(), plain.begin() + 6, plain.end());
    words.resize(words.size() + 7 - words.size() % 7);
    stream.rhd(words);
    const std::vector<ADC_Packet> packets = packets_of(stream, 3);
    ASSERT_EQ(packets.size(), 1U);
    EXPECT_EQ(packets[0].samples[1], 32767);
    EXPECT_EQ(packets[0].status, 0x00C0);
}

TEST(ADCExpectation, RowsAfterABadMarkerAreLost) {
    Hand_Made_Stream stream;
    stream.rhd(Hand_Made_Stream::rhd_frame(inputs, 0));
    stream.rhd(Hand_Made_Stream::rhd_frame(inputs, 0));
    stream.rhd({0, 0});
    stream.bytes()[3 * 16] = 0;
    EXPECT_EQ(packets_of(stream).size(), 1U);
}

} // namespace
