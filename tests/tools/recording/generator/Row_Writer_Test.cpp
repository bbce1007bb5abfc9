#include "generator/Row_Writer.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Pelgar::ORBE::recording;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint16_t flagged[] = {0x1A01, 0x2102, 0x3103, 0x4104, 0x5105, 0x6106, 0x7107};
constexpr std::uint16_t plain[] = {0x1001, 0x2002, 0x3003, 0x4004, 0x5005, 0x6006, 0x7007};

Fault one(Fault_Kind kind, std::uint64_t position) {
    Fault fault;
    fault.kind = kind;
    fault.position = position;
    return fault;
}

Bytes bytes_of(const Row_Writer& writer) {
    return {writer.bytes().begin(), writer.bytes().end()};
}

Row_Writer writer_with(const std::vector<Fault>& faults) {
    return Row_Writer(Fault_Plan(faults, 1), 64);
}

TEST(RowWriter, ARowIsMarkerAndStreamCounterAndSevenWordsLowByteFirst) {
    Row_Writer writer = writer_with({});
    writer.write(2, flagged);
    EXPECT_EQ(bytes_of(writer), (Bytes{0xD2, 0x00, 0x01, 0x1A, 0x02, 0x21, 0x03, 0x31, 0x04, 0x41, 0x05, 0x51,
                                       0x06, 0x61, 0x07, 0x71}));
}

TEST(RowWriter, EachStreamCountsItsOwnRowsAndWrapsAfter255) {
    Row_Writer writer = writer_with({});
    for (int i = 0; i < 257; ++i) {
        writer.write(0, plain);
    }
    writer.write(4, plain);
    const Bytes bytes = bytes_of(writer);
    ASSERT_EQ(bytes.size(), 258U * 16);
    EXPECT_EQ(bytes.at(255 * 16 + 1), 255);
    EXPECT_EQ(bytes.at(256 * 16 + 1), 0);
    EXPECT_EQ(bytes.at(257 * 16), 0xD4);
    EXPECT_EQ(bytes.at(257 * 16 + 1), 0);
}

TEST(RowWriter, ClearKeepsTheCounters) {
    Row_Writer writer = writer_with({});
    writer.write(1, plain);
    writer.clear();
    EXPECT_TRUE(writer.bytes().empty());
    writer.write(1, plain);
    EXPECT_EQ(bytes_of(writer).at(1), 1);
}

TEST(RowWriter, ResizeDropsBytesOrAppendsZeros) {
    Row_Writer writer = writer_with({});
    writer.write(1, plain);
    writer.resize(3);
    EXPECT_EQ(bytes_of(writer), (Bytes{0xD1, 0x00, 0x01}));
    writer.resize(5);
    EXPECT_EQ(bytes_of(writer), (Bytes{0xD1, 0x00, 0x01, 0x00, 0x00}));
}

TEST(RowWriter, ALostRowIsMissingButCounted) {
    Row_Writer writer = writer_with({one(Fault_Kind::lost_row, 1)});
    for (int i = 0; i < 3; ++i) {
        writer.write(0, plain);
    }
    const Bytes bytes = bytes_of(writer);
    ASSERT_EQ(bytes.size(), 2U * 16);
    EXPECT_EQ(bytes.at(1), 0);
    EXPECT_EQ(bytes.at(17), 2);
}

TEST(RowWriter, ABadMarkerKeepsTheStreamId) {
    Row_Writer writer = writer_with({one(Fault_Kind::bad_marker, 0)});
    writer.write(3, plain);
    EXPECT_EQ(bytes_of(writer).at(0), 0x53);
}

TEST(RowWriter, AWrongTagChangesTheTagOfOneWordOnly) {
    Row_Writer writer = writer_with({one(Fault_Kind::wrong_tag, 0)});
    writer.write(0, plain);
    const Bytes bytes = bytes_of(writer);
    int changed = 0;
    for (std::size_t lane = 0; lane < 7; ++lane) {
        const unsigned word = bytes.at(2 + 2 * lane) | static_cast<unsigned>(bytes.at(3 + 2 * lane)) << 8;
        EXPECT_EQ(word & 0x7FFF, plain[lane]);
        changed += word != plain[lane] ? 1 : 0;
    }
    EXPECT_EQ(changed, 1);
}

TEST(RowWriter, RHDRowsHaveNoTagsToDamage) {
    Row_Writer writer = writer_with({one(Fault_Kind::wrong_tag, 0)});
    writer.write(4, plain);
    EXPECT_EQ(bytes_of(writer).at(3), 0x10);
}

TEST(RowWriter, AMissingFlagStrikesRowsThatCarryTheFlag) {
    Row_Writer writer = writer_with({one(Fault_Kind::missing_flag, 1)});
    writer.write(0, flagged);
    writer.write(0, plain);
    writer.write(0, flagged);
    const Bytes bytes = bytes_of(writer);
    EXPECT_EQ(bytes.at(3), 0x1A);
    EXPECT_EQ(bytes.at(16 + 3), 0x10);
    EXPECT_EQ(bytes.at(32 + 3), 0x12);
}

TEST(RowWriter, AnUnknownRowStandsBeforeTheStruckRow) {
    Row_Writer writer = writer_with({one(Fault_Kind::unknown_row, 0)});
    writer.write(0, plain);
    const Bytes bytes = bytes_of(writer);
    ASSERT_EQ(bytes.size(), 2U * 16);
    EXPECT_EQ(bytes.at(0) & 0xF0, 0xD0);
    EXPECT_GE(bytes.at(0) & 0x0F, 5);
    EXPECT_EQ(bytes.at(1), 0);
    EXPECT_EQ(bytes.at(16), 0xD0);
    EXPECT_EQ(bytes.at(17), 0);
}

} // namespace
