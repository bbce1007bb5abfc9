#include "Scope_Depth.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace loguru::detail;

TEST(ScopeDepth, CountsTheScopesThatAListenerSaw) {
    enter_scope(loguru::Verbosity_INFO);
    enter_scope(3);
    enter_scope(3);
    EXPECT_EQ(scope_depth(loguru::Verbosity_ERROR), 0U);
    EXPECT_EQ(scope_depth(loguru::Verbosity_INFO), 1U);
    EXPECT_EQ(scope_depth(2), 1U);
    EXPECT_EQ(scope_depth(3), 3U);
    EXPECT_EQ(scope_depth(loguru::Verbosity_MAX), 3U);
    leave_scope(3);
    leave_scope(loguru::Verbosity_INFO);
    EXPECT_EQ(scope_depth(loguru::Verbosity_MAX), 1U);
    leave_scope(3);
    EXPECT_EQ(scope_depth(loguru::Verbosity_MAX), 0U);
}

TEST(ScopeDepth, VerbositiesBeyondTheLevelsCountAsTheOutermostOnes) {
    enter_scope(100);
    EXPECT_EQ(scope_depth(8), 0U);
    EXPECT_EQ(scope_depth(loguru::Verbosity_MAX), 1U);
    EXPECT_EQ(scope_depth(1000), 1U);
    enter_scope(-100);
    EXPECT_EQ(scope_depth(-1000), 1U);
    leave_scope(-100);
    leave_scope(100);
    EXPECT_EQ(scope_depth(1000), 0U);
}

TEST(ScopeDepth, EveryThreadHasItsOwn) {
    enter_scope(1);
    std::thread([] {
        EXPECT_EQ(scope_depth(1), 0U);
        enter_scope(1);
        EXPECT_EQ(scope_depth(1), 1U);
        leave_scope(1);
    }).join();
    EXPECT_EQ(scope_depth(1), 1U);
    leave_scope(1);
}

} // namespace
