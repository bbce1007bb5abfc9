#include "Log_Capture.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

namespace {

using Pelgar::ORBE::test::Log_Capture;

TEST(LogCapture, SeesVerbosityTextAndScopes) {
    const Log_Capture capture;
    {
        LOG_SCOPE_F(INFO, "openBS");
        VLOG_F(1, "slotID : %d", 3);
        LOG_F(ERROR, "Open driver failed");
    }
    EXPECT_TRUE(capture.has_scope(0, "openBS"));
    EXPECT_EQ(capture.count(1, "slotID : 3"), 1);
    EXPECT_EQ(capture.count(-2, "Open driver failed"), 1);
    EXPECT_EQ(capture.count("} openBS"), 1);
    EXPECT_EQ(capture.texts(), (std::vector<std::string>{"slotID : 3", "Open driver failed"}));
    EXPECT_EQ(capture.lines().front().file, "Log_Capture_Test.cpp");
}

} // namespace
