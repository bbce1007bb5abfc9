// The numbers run from 0, in leaps that a probe's counter of 20 bits can tell, and on from where they start.
#include "Sample_Numbers.h"

#include <gtest/gtest.h>

namespace {

using Pelgar::ORBE::test::Sample_Numbers;

TEST(Sample_Numbers, WithoutAStartNothingIsLeftOut) {
    const Sample_Numbers numbers;
    for (std::uint64_t tick = 0; tick < 1000; ++tick) {
        ASSERT_EQ(numbers.of_port(tick), tick);
        ASSERT_EQ(numbers.of_adc(tick), tick);
    }
}

TEST(Sample_Numbers, LeapsLeadToTheStartAndOn) {
    // Beyond 2^32 samples.
    constexpr std::uint64_t start = 4'294'960'008;
    constexpr std::uint64_t longest_gap = (std::uint64_t{3} << 20U) / 13;
    const Sample_Numbers numbers(start);
    ASSERT_EQ(numbers.of_port(0), 0U);
    ASSERT_EQ(numbers.of_adc(0), 0U);
    std::uint64_t tick = 0;
    for (; numbers.of_port(tick) < start; ++tick) {
        const std::uint64_t leap = numbers.of_port(tick + 1) - numbers.of_port(tick);
        ASSERT_GT(leap, 0U);
        ASSERT_LE(leap, longest_gap);
        const std::uint64_t adc_leap = numbers.of_adc(tick + 1) - numbers.of_adc(tick);
        ASSERT_GT(adc_leap, 0U);
        ASSERT_LT(adc_leap, std::uint64_t{1} << 31U);
    }
    EXPECT_EQ(tick % 12, 0U) << "packets are whole behind the leaps";
    for (std::uint64_t i = 0; i < 100; ++i) {
        ASSERT_EQ(numbers.of_port(tick + i), start + i);
        ASSERT_EQ(numbers.of_adc(tick + i), start + i);
        ASSERT_EQ(numbers.adc_tick(start + i), tick + i);
    }
}

} // namespace
