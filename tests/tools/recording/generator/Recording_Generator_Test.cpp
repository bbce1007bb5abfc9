#include "generator/Recording_Generator.h"

#include "expectation/Packet_Counts.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace Pelgar::ORBE::recording;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t mib = 1U << 20;

Recording_Options of_super_frames(std::uint64_t count) {
    Recording_Options options;
    options.super_frames = count;
    return options;
}

// The words of all RHD rows.
std::vector<std::uint16_t> rhd_words(const Bytes& recording) {
    std::vector<std::uint16_t> words;
    for (std::size_t at = 0; at + 16 <= recording.size(); at += 16) {
        for (std::size_t i = 2; recording[at] == 0xD4 && i < 16; i += 2) {
            words.push_back(static_cast<std::uint16_t>(recording[at + i] | recording[at + i + 1] << 8));
        }
    }
    return words;
}

Packet_Counts counts_of(const Bytes& recording) {
    Packet_Counts counts;
    for (std::size_t at = 0; at + mib <= recording.size(); at += mib) {
        counts.add_piece(std::span(recording).subspan(at, mib));
    }
    return counts;
}

TEST(RecordingGenerator, PortsTakeTurnsRowByRowAndRHDRowsFollow) {
    const Bytes recording = make_recording(of_super_frames(2));
    // 65 rows of four ports and, of 20 words a frame, two and then (with six words left over) three rows.
    ASSERT_EQ(recording.size(), (2U * 260 + 2 + 3) * 16);
    for (std::size_t row = 0; row < 260; ++row) {
        ASSERT_EQ(recording[row * 16], 0xD0 + row % 4) << row;
        ASSERT_EQ(recording[row * 16 + 1], row / 4) << row;
    }
    EXPECT_EQ(recording[260 * 16], 0xD4);
    EXPECT_EQ(recording[260 * 16 + 1], 0);
    EXPECT_EQ(recording[261 * 16], 0xD4);
    EXPECT_EQ(recording[262 * 16], 0xD0);
    EXPECT_EQ(recording[262 * 16 + 1], 65);
    EXPECT_EQ(recording[262 * 16 + 3] & 0xF8, 0x18); // tag 1 and the super-frame flag
    EXPECT_EQ(recording[522 * 16], 0xD4);
    EXPECT_EQ(recording[522 * 16 + 1], 2);
}

TEST(RecordingGenerator, RHDFramesRunOnWithoutPadding) {
    const std::vector<std::uint16_t> words = rhd_words(make_recording(of_super_frames(7)));
    ASSERT_EQ(words.size(), 140U);
    for (std::size_t frame = 0; frame < 7; ++frame) {
        EXPECT_EQ(words[frame * 20], 0x2A53);
        EXPECT_EQ(words[frame * 20 + 3], 0xD7A2);
        EXPECT_EQ(words[frame * 20 + 4], frame);
    }
}

TEST(RecordingGenerator, OnlyTheChosenSourcesAreThere) {
    Recording_Options options = of_super_frames(3);
    options.ports = {2, 4};
    options.rhd = false;
    const Bytes recording = make_recording(options);
    ASSERT_EQ(recording.size(), 3U * 2 * 65 * 16);
    EXPECT_EQ(recording[0], 0xD1);
    EXPECT_EQ(recording[16], 0xD3);
    EXPECT_EQ(recording[32], 0xD1);
}

TEST(RecordingGenerator, TheSameSeedGivesTheSameBytes) {
    Recording_Options options = of_super_frames(20);
    options.faults = {parse_fault("lost-row~0.01"), parse_fault("wrong-tag~0.01")};
    const Bytes recording = make_recording(options);
    EXPECT_EQ(make_recording(options), recording);
    options.seed = 2;
    EXPECT_NE(make_recording(options), recording);
}

TEST(RecordingGenerator, PartsMakeTheSameRecordingAsTheWhole) {
    // More than one part of a few MiB.
    Recording_Options options = of_super_frames(1500);
    Recording_Generator generator(options);
    std::size_t parts = 0;
    std::size_t size = 0;
    for (auto part = generator.next(); !part.empty(); part = generator.next()) {
        ++parts;
        size += part.size();
    }
    EXPECT_GT(parts, 1U);
    EXPECT_EQ(size, generator.expected_bytes());
    // 1500 frames of 20 words are 4285 rows and 5 words.
    EXPECT_EQ(size, (1500U * 260 + 4285) * 16);
    EXPECT_TRUE(generator.next().empty());
}

TEST(RecordingGenerator, BlocksAreWholePiecesAndReachTheHostFromEveryPort) {
    for (const std::uint64_t blocks : {1U, 2U}) {
        for (const std::vector<unsigned>& ports :
             {std::vector<unsigned>{1, 2, 3, 4}, std::vector<unsigned>{3}}) {
            Recording_Options options;
            options.blocks = blocks;
            options.ports = ports;
            const Bytes recording = make_recording(options);
            EXPECT_EQ(recording.size() % mib, 0U);
            EXPECT_EQ(recording.size(), Recording_Generator(options).expected_bytes());
            const Packet_Counts counts = counts_of(recording);
            for (unsigned port = 1; port <= 4; ++port) {
                const bool there = std::find(ports.begin(), ports.end(), port) != ports.end();
                EXPECT_EQ(counts.of_port(port), there ? blocks * 1792 / 12 : 0);
            }
            // One MiB less, and a block is missing.
            const Bytes shorter(recording.begin(), recording.end() - static_cast<std::ptrdiff_t>(mib));
            EXPECT_LT(counts_of(shorter).of_port(ports.back()), blocks * 1792 / 12);
        }
    }
}

TEST(RecordingGenerator, ExtraBytesAreZerosAtTheEnd) {
    Recording_Options options = of_super_frames(1);
    const Bytes plain = make_recording(options);
    options.extra_bytes = 5;
    Bytes expected = plain;
    expected.insert(expected.end(), 5, 0);
    EXPECT_EQ(make_recording(options), expected);
}

TEST(RecordingGenerator, ACutFrameEndsEarlyAndTheNextFollowsAtOnce) {
    Recording_Options options = of_super_frames(30);
    options.faults = {parse_fault("cut-frame@3")};
    const std::vector<std::uint16_t> words = rhd_words(make_recording(options));
    std::vector<std::size_t> starts;
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        if (words[i] == 0x2A53 && words[i + 1] == 0x3813) {
            starts.push_back(i);
        }
    }
    ASSERT_GT(starts.size(), 5U);
    EXPECT_EQ(starts[3], 60U);
    // The frame after the cut one follows within its length.
    EXPECT_LT(starts[4], 80U);
    EXPECT_EQ(starts[5], starts[4] + 20);
}

TEST(RecordingGenerator, RefusesOptionsThatContradictThemselves) {
    Recording_Options options = of_super_frames(1);
    options.ports = {5};
    EXPECT_THROW(Recording_Generator{options}, std::invalid_argument);
    options.ports = {2, 1};
    EXPECT_THROW(Recording_Generator{options}, std::invalid_argument);
    options.ports = {};
    EXPECT_NO_THROW(Recording_Generator{options});
    options.blocks = 1;
    EXPECT_THROW(Recording_Generator{options}, std::invalid_argument);
    options.ports = {1};
    options.rhd_streams = 33;
    EXPECT_THROW(Recording_Generator{options}, std::invalid_argument);
}

TEST(RecordingGenerator, RowsOfTheRHDStreamAloneMakeARecording) {
    Recording_Options options = of_super_frames(7);
    options.ports = {};
    EXPECT_EQ(make_recording(options).size(), 20U * 16);
}

} // namespace
