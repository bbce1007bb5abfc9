// The frame reader against the plain one, on random streams with faults, cut into random pieces, with one
// record for all frames as the worker has it.
#include "rhd/RHD_Frame_Reader.h"
#include "rhd/RHD_Word_Fifo.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "RHD_Reference_Reader.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <span>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;

Words random_stream(std::mt19937& random, std::size_t stream_count) {
    Words words;
    for (std::uint32_t seed = 0; seed < 40; ++seed) {
        const Words frame = rhd_words(numbered_rhd_frame(seed, stream_count), stream_count);
        std::size_t begin = 0;
        std::size_t end = frame.size();
        if (random() % 8 == 0) {
            begin = random() % frame.size();
        }
        if (random() % 8 == 0) {
            end = begin + random() % (frame.size() - begin + 1);
        }
        words.insert(words.end(), frame.begin() + static_cast<std::ptrdiff_t>(begin),
                     frame.begin() + static_cast<std::ptrdiff_t>(end));
        if (random() % 8 == 0) {
            words.push_back(0x2A53);
        }
    }
    return words;
}

class RHD_Reader_Comparison : public testing::TestWithParam<std::size_t> {};

TEST_P(RHD_Reader_Comparison, ReadsAndPrintsWhatTheReferenceDoes) {
    const std::size_t stream_count = GetParam();
    std::mt19937 random(static_cast<std::uint32_t>(stream_count));
    std::uint32_t valid_frames = 0;
    for (int round = 0; round < 20; ++round) {
        const Words words = random_stream(random, stream_count);
        RHD_Reference_Reader reference(words, stream_count);
        RHD_Word_Fifo fifo;
        RHD_Frame_Reader reader(fifo);
        reader.set_enabled_stream_count(static_cast<std::uint32_t>(stream_count));
        const std::size_t longest = 1 + random() % 12'000;
        for (std::size_t at = 0; at < words.size();) {
            const std::size_t piece = std::min(1 + random() % longest, words.size() - at);
            fifo.push_words(std::span(words).subspan(at, piece));
            at += piece;
        }
        RHD_Frame frame;
        bool stopped = false;
        const auto output = captured_output([&] {
            while (!stopped || fifo.size() != 0) {
                if (!stopped && !reference.can_read()) {
                    stopped = true;
                    fifo.signal_to_stop();
                    reference.signal_to_stop();
                }
                Rhd_Frame_Copy expected;
                const bool valid = reader.read_frame(frame);
                ASSERT_EQ(valid, reference.read(expected));
                ASSERT_TRUE(!valid || copy_of(frame) == expected);
                ASSERT_EQ(fifo.size(), reference.words_left());
            }
        });
        EXPECT_EQ(output.out, reference.out);
        EXPECT_EQ(output.err, reference.err);
        EXPECT_EQ(reader.get_valid_frame_count(), reference.frames);
        valid_frames += reference.frames;
    }
    EXPECT_GT(valid_frames, 300U);
}

INSTANTIATE_TEST_SUITE_P(Streams, RHD_Reader_Comparison,
                         testing::Values(0U, 1U, 3U, 7U, 8U, 13U, 16U, 31U, 32U, 33U, 50U));

TEST(RHD_Reader, TheRecordsArraysAreKeptAndThoseOfStreamsThatAreOffGo) {
    RHD_Word_Fifo fifo;
    RHD_Frame_Reader reader(fifo);
    reader.set_enabled_stream_count(16);
    fifo.push_words(rhd_words(numbered_rhd_frame(1, 16), 16));
    fifo.push_words(rhd_words(numbered_rhd_frame(2, 16), 16));
    fifo.push_words(rhd_words(numbered_rhd_frame(3, 2), 2));
    RHD_Frame frame;
    EXPECT_TRUE(reader.read_frame(frame));
    const auto* const first = frame.amplifier_data[0].get();
    EXPECT_TRUE(reader.read_frame(frame));
    EXPECT_EQ(frame.amplifier_data[0].get(), first);
    EXPECT_TRUE(copy_of(frame) == numbered_rhd_frame(2, 16));
    // A listener may keep the arrays.
    frame.amplifier_data[1].reset();
    reader.set_enabled_stream_count(2);
    EXPECT_TRUE(reader.read_frame(frame));
    EXPECT_TRUE(copy_of(frame) == numbered_rhd_frame(3, 2));
    EXPECT_EQ(frame.amplifier_data[2], nullptr);
}

} // namespace
