#include "rhd/RHD_Turn.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using namespace Pelgar::ORBE::demux;

TEST(RHD_Turn, TurnsAsThePlainCodeDoesForEveryNumberOfStreams) {
    std::mt19937 random(1);
    for (std::size_t stream_count = 0; stream_count <= rhd_max_stream_count; ++stream_count) {
        for (std::size_t offset = 0; offset < 9; ++offset) {
            // In memory of its own length, so that AddressSanitizer sees a word too far.
            std::vector<std::uint16_t> words(offset + rhd_words_per_stream * stream_count);
            for (std::uint16_t& word : words) {
                word = static_cast<std::uint16_t>(random());
            }
            std::vector<RHD_Stream_Words> turned(stream_count);
            std::vector<RHD_Stream_Words> expected(stream_count);
            std::vector<RHD_Stream_Words*> turned_arrays;
            std::vector<RHD_Stream_Words*> expected_arrays;
            for (std::size_t stream = 0; stream < stream_count; ++stream) {
                turned_arrays.push_back(&turned[stream]);
                expected_arrays.push_back(&expected[stream]);
            }
            turn_rhd_words(words.data() + offset, turned_arrays);
            plain::turn_rhd_words(words.data() + offset, expected_arrays);
            ASSERT_EQ(turned, expected) << stream_count;
        }
    }
}

TEST(RHD_Turn, ThePlainCodePutsEachStreamsWordsTogether) {
    std::vector<std::uint16_t> words(rhd_words_per_stream * 3);
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = static_cast<std::uint16_t>(i);
    }
    std::array<RHD_Stream_Words, 3> turned{};
    const std::array<RHD_Stream_Words*, 3> arrays = {&turned[0], &turned[1], &turned[2]};
    plain::turn_rhd_words(words.data(), arrays);
    for (std::size_t stream = 0; stream < 3; ++stream) {
        for (std::size_t position = 0; position < rhd_words_per_stream; ++position) {
            EXPECT_EQ(turned[stream][position], 3 * position + stream);
        }
    }
}

} // namespace
