#include "generator/Super_Frame_Generator.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Pelgar::ORBE::recording;

Super_Frame_Generator ramp() {
    return Super_Frame_Generator(Channel_Signal({parse_signal_choice("ramp")}, 0.0, 1, 1));
}

// Value `index` of frame `frame` by the order of lanes and rows: lane index / 5, row index % 5.
unsigned value(const std::array<std::uint16_t, words_per_super_frame>& words, std::size_t frame,
               std::size_t index) {
    return words[frame * 35 + index % 5 * 7 + index / 5] & 0x3FFU;
}

TEST(SuperFrameGenerator, TagsAreTheLaneNumbersAndOnlyTheFirstWordIsFlagged) {
    Super_Frame_Generator generator = ramp();
    for (int super_frame = 0; super_frame < 3; ++super_frame) {
        const auto& words = generator.next();
        for (std::size_t i = 0; i < words.size(); ++i) {
            ASSERT_EQ(words[i] >> 12, i % 7 + 1) << i;
            ASSERT_EQ((words[i] & 0x0800) != 0, i == 0) << i;
            ASSERT_EQ(words[i] & 0x0400, 0) << i;
        }
    }
}

TEST(SuperFrameGenerator, FramesAreCountedFromZero) {
    Super_Frame_Generator generator = ramp();
    unsigned expected = 0;
    for (int super_frame = 0; super_frame < 100; ++super_frame) {
        const auto& words = generator.next();
        for (std::size_t frame = 0; frame < 13; ++frame, ++expected) {
            ASSERT_EQ(value(words, frame, 33), expected >> 10);
            ASSERT_EQ(value(words, frame, 34), expected & 0x3FF);
            ASSERT_EQ(value(words, frame, 32), 0U);
        }
    }
}

TEST(SuperFrameGenerator, TheCounterHasTwentyBits) {
    Super_Frame_Generator generator = ramp();
    // Frame 2^20 is frame 9 of super frame 80659.
    for (int i = 0; i < 80659; ++i) {
        generator.next();
    }
    const auto& words = generator.next();
    EXPECT_EQ(value(words, 8, 33), 0x3FFU);
    EXPECT_EQ(value(words, 8, 34), 0x3FFU);
    EXPECT_EQ(value(words, 9, 33), 0U);
    EXPECT_EQ(value(words, 9, 34), 0U);
}

TEST(SuperFrameGenerator, TheFirstWordsByHand) {
    // Super frame 0: the ramp's value is the channel number. Frame 0 carries LFP channels of slot 0: the
    // first row holds ADCs 0, 5, 10, ... 30 and nothing of the counter's lane but ADC 30.
    const auto words = ramp().next();
    EXPECT_EQ(words[0], 0x1800 | 0);             // lane 1: ADC 0, channel 0, flag
    EXPECT_EQ(words[1], 0x2000 | 49);            // lane 2: ADC 5, channel 49
    EXPECT_EQ(words[2], 0x3000 | 120);           // lane 3: ADC 10, channel 120
    EXPECT_EQ(words[3], 0x4000 | 169);           // lane 4: ADC 15, channel 169
    EXPECT_EQ(words[4], 0x5000 | 240);           // lane 5: ADC 20, channel 240
    EXPECT_EQ(words[5], 0x6000 | 289);           // lane 6: ADC 25, channel 289
    EXPECT_EQ(words[6], 0x7000 | 360);           // lane 7: ADC 30, channel 360
    EXPECT_EQ(words[7], 0x1000 | 1);             // row 2, lane 1: ADC 1, channel 1
    EXPECT_EQ(words[35], 0x1000 | 0);            // frame 1: AP, slot 0
    EXPECT_EQ(words[70], 0x1000 | 2);            // frame 2: AP, slot 1
    EXPECT_EQ(words[12 * 35 + 6], 0x7000 | 382); // frame 12: AP, slot 11, ADC 30
}

TEST(SuperFrameGenerator, EveryChannelHasItsSampleInBothBands) {
    constexpr unsigned first_channel[32] = {0,   1,   24,  25,  48,  49,  72,  73,  96,  97,  120,
                                            121, 144, 145, 168, 169, 192, 193, 216, 217, 240, 241,
                                            264, 265, 288, 289, 312, 313, 336, 337, 360, 361};
    Super_Frame_Generator generator = ramp();
    for (unsigned number = 0; number < 30; ++number) {
        const auto& words = generator.next();
        for (unsigned adc = 0; adc < 32; ++adc) {
            for (unsigned slot = 0; slot < 12; ++slot) {
                ASSERT_EQ(value(words, slot + 1, adc), (number + first_channel[adc] + 2 * slot) % 1024);
            }
            // Twelve super frames make one LFP sample.
            ASSERT_EQ(value(words, 0, adc), (number / 12 + first_channel[adc] + 2 * (number % 12)) % 1024);
        }
    }
}

} // namespace
