#include "common/Waiting.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Pelgar::ORBE::planning_time;
using Pelgar::ORBE::replace_planning_clock;
using Pelgar::ORBE::replace_waiter;
using Pelgar::ORBE::wait_for;

TEST(Waiting, ReplacedWaiterSeesEveryWaitInsteadOfTheClock) {
    std::vector<std::chrono::milliseconds> waits;
    replace_waiter([&](std::chrono::milliseconds duration) { waits.push_back(duration); });
    wait_for(10'000ms);
    wait_for(100ms);
    replace_waiter({});
    EXPECT_EQ(waits, (std::vector<std::chrono::milliseconds>{10'000ms, 100ms}));
}

TEST(Waiting, ReplaceAnswersTheWaiterThatWasInForce) {
    int calls = 0;
    replace_waiter([&](std::chrono::milliseconds) { ++calls; });
    const auto previous = replace_waiter({});
    previous(1ms);
    EXPECT_EQ(calls, 1);
}

TEST(Waiting, SleepsAtLeastAsLongAsAsked) {
    const auto start = std::chrono::steady_clock::now();
    wait_for(20ms);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
}

TEST(Waiting, WaitsArePlannedByTheSteadyClockOrByWhatReplacesIt) {
    const auto before = std::chrono::steady_clock::now();
    EXPECT_GE(planning_time(), before);
    replace_planning_clock([&] { return before - 3h; });
    EXPECT_EQ(planning_time(), before - 3h);
    replace_planning_clock({});
    EXPECT_GE(planning_time(), before);
}

} // namespace
