#include "library_run/Time_Limit.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <future>
#include <stdexcept>

namespace {

using Pelgar::ORBE::tools::run_within;
using namespace std::chrono_literals;

TEST(TimeLimit, WaitsForTheEnd) {
    int done = 0;
    run_within(
        1h, [&] { done = 1; }, [] { FAIL(); });
    EXPECT_EQ(done, 1);
}

TEST(TimeLimit, LetsExceptionsThrough) {
    EXPECT_THROW(run_within(
                     1h, [] { throw std::runtime_error("no"); }, [] { FAIL(); }),
                 std::runtime_error);
}

TEST(TimeLimit, EndsTheProgramWhenTheEndDoesNotCome) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto wait_for_ever = [] {
        std::promise<void> never;
        never.get_future().wait();
    };
    EXPECT_EXIT(run_within(1ms, wait_for_ever, [] { std::fputs("given up\n", stderr); }),
                testing::ExitedWithCode(1), "^given up");
}

} // namespace
