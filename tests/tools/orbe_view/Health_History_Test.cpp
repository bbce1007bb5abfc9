#include "history/Health_History.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Pelgar::ORBE::view {

namespace {

Health line(double seconds, double row_gaps, double lost) {
    Health health;
    health.seconds = seconds;
    health.streams[0].row_gaps = row_gaps;
    health.streams[0].lost_samples = lost;
    return health;
}

TEST(Health_History, LinesAreForgottenAfterTwoMinutes) {
    Health_History history;
    for (int number = 1; number <= 300; ++number) {
        history.add(line(number * 0.5, 0.0, 0.0));
    }
    const Health_Report report = history.report();
    ASSERT_EQ(report.lines.size(), 240U);
    EXPECT_EQ(report.lines.front().seconds, 30.5);
    EXPECT_EQ(report.lines.back().seconds, 150.0);
}

TEST(Health_History, SumsAreNotForgottenWithTheirLines) {
    Health_History history;
    history.add(line(0.5, 2.0, 12.0));
    for (int number = 2; number <= 1000; ++number) {
        history.add(line(number * 0.5, number == 700 ? 1.0 : 0.0, 0.0));
    }
    const Stream_Sums sums = history.report().sums[0];
    EXPECT_EQ(sums.row_gaps, 3.0);
    EXPECT_EQ(sums.lost_samples, 12.0);
}

TEST(Health_History, WhatIsUnknownAddsNothing) {
    Health_History history;
    history.add(line(0.5, 1.0, unknown));
    history.add(line(1.0, unknown, unknown));
    history.add(line(1.5, 4.0, unknown));
    const Health_Report report = history.report();
    EXPECT_EQ(report.sums[0].row_gaps, 5.0);
    EXPECT_TRUE(std::isnan(report.sums[0].lost_samples));
    EXPECT_TRUE(std::isnan(report.sums[0].frame_gaps));
    EXPECT_TRUE(std::isnan(report.sums[1].row_gaps));
}

TEST(Health_History, AStreamThatHasComeIsRememberedBeyondItsLines) {
    Health_History history;
    Health health;
    health.streams[2].rate = 30000.0;
    health.streams[3].rate = 0.0;
    history.add(health);
    health.streams[2].rate = 0.0;
    for (int number = 0; number < 300; ++number) {
        history.add(health);
    }
    const Health_Report report = history.report();
    EXPECT_EQ(report.lines.front().streams[2].rate, 0.0);
    EXPECT_TRUE(report.sums[2].has_come);
    EXPECT_FALSE(report.sums[3].has_come);
    EXPECT_FALSE(report.sums[4].has_come);
    history.clear();
    EXPECT_FALSE(history.report().sums[2].has_come);
}

TEST(Health_History, AJumpBeginsTheSumsAnew) {
    Health_History history;
    history.add(line(0.5, 1.0, 3.0));
    history.clear();
    history.add(line(7.5, 2.0, unknown));
    const Health_Report report = history.report();
    EXPECT_EQ(report.lines.size(), 1U);
    EXPECT_EQ(report.sums[0].row_gaps, 2.0);
    EXPECT_TRUE(std::isnan(report.sums[0].lost_samples));
}

} // namespace

} // namespace Pelgar::ORBE::view
