#include "common/Once_A_Second.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

using namespace std::chrono_literals;
using Pelgar::ORBE::Once_A_Second;

TEST(Once_A_Second, IsDueAtFirstAndThenASecondAfterTheLastTime) {
    Once_A_Second telling;
    const Once_A_Second::Clock::time_point begin{}; // also at the clock's own beginning
    EXPECT_TRUE(telling.is_due(begin));
    EXPECT_FALSE(telling.is_due(begin));
    EXPECT_FALSE(telling.is_due(begin + 999ms));
    EXPECT_TRUE(telling.is_due(begin + 1500ms));
    EXPECT_FALSE(telling.is_due(begin + 2000ms));
    EXPECT_TRUE(telling.is_due(begin + 2500ms));
}

} // namespace
