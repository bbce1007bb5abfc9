#include "generator/RHD_Generator.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

using Pelgar::ORBE::recording::RHD_Generator;
using Words = std::vector<std::uint16_t>;

TEST(RHDGenerator, AFrameWithoutStreamsHasTwentyWords) {
    RHD_Generator generator(0, 5);
    Words words;
    generator.append(words);
    generator.append(words);
    ASSERT_EQ(words.size(), 40U);
    EXPECT_EQ(Words(words.begin(), words.begin() + 8), (Words{0x2A53, 0x3813, 0x2AAA, 0xD7A2, 0, 0, 0, 0}));
    EXPECT_EQ(Words(words.begin() + 20, words.begin() + 28),
              (Words{0x2A53, 0x3813, 0x2AAA, 0xD7A2, 1, 0, 0, 0}));
    for (std::size_t input = 0; input < 8; ++input) {
        EXPECT_EQ(words[8 + input], generator.adc_input(0, input));
        EXPECT_EQ(words[28 + input], generator.adc_input(1, input));
    }
    EXPECT_EQ(Words(words.begin() + 16, words.begin() + 20), (Words{0, 0, 0, 0}));
}

TEST(RHDGenerator, StreamsAddTheirWordsAndFiller) {
    const std::pair<unsigned, std::size_t> lengths[] = {{1, 56},  {2, 92},  {3, 128},
                                                        {4, 160}, {5, 196}, {32, 1140}};
    for (const auto& [streams, length] : lengths) {
        RHD_Generator generator(streams, 5);
        Words words;
        generator.append(words);
        ASSERT_EQ(words.size(), length) << streams;
        // Behind the amplifier words and the filler come two unused words and the ADC inputs.
        EXPECT_EQ(words[6 + 35 * streams + streams % 4 + 2], generator.adc_input(0, 0));
    }
}

TEST(RHDGenerator, EvenInputsAreRampsAndOddInputsTones) {
    const RHD_Generator generator(0, 5);
    const auto step = static_cast<std::uint16_t>(generator.adc_input(1, 2) - generator.adc_input(0, 2));
    int turns = 0;
    for (std::uint64_t frame = 1; frame < 30000; ++frame) {
        ASSERT_EQ(
            static_cast<std::uint16_t>(generator.adc_input(frame, 2) - generator.adc_input(frame - 1, 2)),
            step);
        const std::uint16_t tone = generator.adc_input(frame, 3);
        ASSERT_GE(tone, 32768 - 24000);
        ASSERT_LE(tone, 32768 + 24000);
        turns += tone >= 32768 && generator.adc_input(frame - 1, 3) < 32768 ? 1 : 0;
    }
    EXPECT_NE(step, 0);
    EXPECT_GT(turns, 0);
}

TEST(RHDGenerator, TTLInputsChangeNowAndThenAndHaveSixteenBits) {
    const RHD_Generator generator(0, 5);
    EXPECT_EQ(generator.ttl_inputs(0), 0U);
    int changes = 0;
    std::uint32_t ever = 0;
    for (std::uint64_t frame = 1; frame < 60000; ++frame) {
        const std::uint32_t ttl = generator.ttl_inputs(frame);
        if (ttl != generator.ttl_inputs(frame - 1)) {
            ++changes;
            ASSERT_EQ(frame % RHD_Generator::ttl_hold_frames, 0U);
        }
        ever |= ttl;
    }
    EXPECT_GT(changes, 20);
    EXPECT_LT(changes, 80);
    EXPECT_EQ(ever, 0xFFFFU);
}

TEST(RHDGenerator, TheTimeStampHasThirtyTwoBitsLowWordFirst) {
    RHD_Generator generator(0, 5);
    Words words;
    for (int i = 0; i <= 65536; ++i) {
        words.clear();
        generator.append(words);
    }
    EXPECT_EQ(words[4], 0);
    EXPECT_EQ(words[5], 1);
}

} // namespace
