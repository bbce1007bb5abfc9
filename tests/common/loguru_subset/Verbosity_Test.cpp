#include <gtest/gtest.h>
#include <loguru.hpp>

namespace {

void ignore(void* /*user_data*/, const loguru::Message& /*message*/) {}

TEST(Verbosity, LevelsAreThoseOfLoguru) {
    EXPECT_EQ(loguru::Verbosity_FATAL, -3);
    EXPECT_EQ(loguru::Verbosity_ERROR, -2);
    EXPECT_EQ(loguru::Verbosity_WARNING, -1);
    EXPECT_EQ(loguru::Verbosity_INFO, 0);
    EXPECT_EQ(loguru::Verbosity_1, 1);
    EXPECT_EQ(loguru::Verbosity_MAX, 9);
    EXPECT_EQ(loguru::Verbosity_OFF, -9);
}

TEST(Verbosity, CutoffIsTheHighestThatAnybodyListensTo) {
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    EXPECT_EQ(loguru::current_verbosity_cutoff(), loguru::Verbosity_OFF);
    loguru::add_callback("warnings", ignore, nullptr, loguru::Verbosity_WARNING);
    EXPECT_EQ(loguru::current_verbosity_cutoff(), -1);
    loguru::add_callback("details", ignore, nullptr, 5);
    EXPECT_EQ(loguru::current_verbosity_cutoff(), 5);
    loguru::g_stderr_verbosity = 7;
    EXPECT_EQ(loguru::current_verbosity_cutoff(), 7);
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    EXPECT_TRUE(loguru::remove_callback("details"));
    EXPECT_EQ(loguru::current_verbosity_cutoff(), -1);
    loguru::remove_all_callbacks();
    EXPECT_EQ(loguru::current_verbosity_cutoff(), loguru::Verbosity_OFF);
}

} // namespace
