// What does not grow is told from what does.
#include "Flat_Series.h"

#include <gtest/gtest.h>

namespace {

using Pelgar::ORBE::test::Flat_Series;

constexpr std::uint64_t allowance = 100;

Flat_Series series_of(std::uint64_t first, std::uint64_t step, int values) {
    Flat_Series series("memory", allowance);
    for (int i = 0; i < values; ++i) {
        series.add(first + step * static_cast<std::uint64_t>(i));
    }
    return series;
}

TEST(Flat_Series, OneThatStaysIsFlat) {
    EXPECT_EQ(series_of(5000, 0, 100).fault(), "");
}

TEST(Flat_Series, OneThatGrowsByTheSameEachTimeIsNot) {
    // Settled in the first fifth of the values, at 5057; 5300 at the end.
    EXPECT_EQ(series_of(5000, 3, 101).fault(), "memory : grew from 5057 to 5300, by 100 at most was allowed");
}

TEST(Flat_Series, GrowthWithinTheAllowanceIsFlat) {
    EXPECT_EQ(series_of(5000, 1, 101).fault(), "");
}

TEST(Flat_Series, WhatTheWarmUpTakesDoesNotCount) {
    Flat_Series series("memory", allowance);
    for (std::uint64_t i = 0; i < 100; ++i) {
        series.add(i < 10 ? 1000 * i : 9000);
    }
    EXPECT_EQ(series.fault(), "");
    EXPECT_EQ(series.settled(), 9000U);
    EXPECT_EQ(series.highest(), 9000U);
}

TEST(Flat_Series, WhatIsThereFromTheBeginningMayComeAgain) {
    Flat_Series series("threads", 0);
    for (int i = 0; i < 90; ++i) {
        series.add(i % 30 < 3 ? 11 : 10);
    }
    EXPECT_EQ(series.fault(), "");
}

TEST(Flat_Series, OneJumpNearTheEndIsFound) {
    Flat_Series series("handles", 0);
    for (int i = 0; i < 100; ++i) {
        series.add(i == 98 ? 10 : 9);
    }
    EXPECT_EQ(series.fault(), "handles : grew from 9 to 10, by 0 at most was allowed");
}

TEST(Flat_Series, TooFewValuesAreNoProof) {
    EXPECT_EQ(series_of(5000, 0, 19).fault(), "memory : 19 values are too few to judge");
    EXPECT_EQ(series_of(5000, 0, 20).fault(), "");
}

} // namespace
