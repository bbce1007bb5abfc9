#include "formats/Sample_Numbers.h"

#include "Made_Streams.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace Pelgar::ORBE;
using recorder::Sample_Numbers;

TEST(Sample_Numbers, AreThoseThatTheStampsWereMadeOf) {
    Sample_Numbers numbers;
    for (std::uint64_t sample = 0; sample < 100'000; ++sample) {
        ASSERT_EQ(numbers.number_of(test::stamp_of_sample(sample)), sample);
    }
}

TEST(Sample_Numbers, GoOnOverTheStampsWraps) {
    constexpr std::uint64_t samples_per_wrap = (std::uint64_t{1} << 32U) * 3 / 10;
    Sample_Numbers numbers;
    for (std::uint64_t wrap = 1; wrap < 5; ++wrap) {
        for (std::uint64_t sample = wrap * samples_per_wrap - 50; sample < wrap * samples_per_wrap + 50;
             ++sample) {
            ASSERT_EQ(numbers.number_of(test::stamp_of_sample(sample)), sample);
        }
    }
}

TEST(Sample_Numbers, StepOverGapsOfAnyLength) {
    Sample_Numbers numbers;
    std::uint64_t sample = 3;
    for (const std::uint64_t gap : {1U, 2U, 1'000U, 30'000U, 1'288'000'000U, 1U, 900'000'000U}) {
        sample += gap;
        ASSERT_EQ(numbers.number_of(test::stamp_of_sample(sample)), sample);
    }
}

TEST(Sample_Numbers, RefuseAStampThatIsThereTwice) {
    Sample_Numbers numbers;
    EXPECT_EQ(numbers.number_of(0), 0U);
    EXPECT_THROW(numbers.number_of(0), std::invalid_argument);
}

} // namespace
