#include "Log_Capture.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

#include <string>
#include <vector>

namespace {

using Pelgar::ORBE::test::Log_Capture;

std::vector<std::string> g_lines;

void keep_line(void* /*user_data*/, const loguru::Message& message) {
    g_lines.push_back(std::string(message.indentation) + message.prefix + message.message);
}

class Scope : public testing::Test {
protected:
    ~Scope() override {
        loguru::remove_all_callbacks();
        g_lines.clear();
    }
};

TEST_F(Scope, EndsWithItsDurationInMilliseconds) {
    loguru::add_callback("lines", keep_line, nullptr, 9);
    {
        LOG_SCOPE_F(INFO, "port %d", 3);
        EXPECT_EQ(g_lines, (std::vector<std::string>{"{ port 3"}));
    }
    ASSERT_EQ(g_lines.size(), 2U);
    const std::string& end = g_lines.back();
    EXPECT_TRUE(end.starts_with("} "));
    EXPECT_TRUE(end.ends_with(" s: port 3"));
    const std::string duration = end.substr(2, end.find(" s: ") - 2);
    EXPECT_GE(std::stod(duration), 0.0);
    EXPECT_EQ(duration.size() - duration.find('.'), 4U) << duration;
}

TEST_F(Scope, IndentsWhatItsThreadLogs) {
    loguru::add_callback("lines", keep_line, nullptr, 9);
    {
        LOG_SCOPE_F(INFO, "outer");
        LOG_F(INFO, "one");
        VLOG_SCOPE_F(2, "inner");
        LOG_F(INFO, "two");
        g_lines.pop_back();
        EXPECT_EQ(g_lines, (std::vector<std::string>{"{ outer", ".   one", ".   { inner"}));
        LOG_F(INFO, "two");
        EXPECT_EQ(g_lines.back(), ".   .   two");
    }
    EXPECT_TRUE(g_lines[4].starts_with(".   } ")) << g_lines[4];
    EXPECT_TRUE(g_lines[5].starts_with("} ")) << g_lines[5];
    LOG_F(INFO, "three");
    EXPECT_EQ(g_lines.back(), "three");
}

TEST_F(Scope, ListenerThatDidNotSeeItOpenGetsNoIndentation) {
    loguru::add_callback("information", keep_line, nullptr, 0);
    const Log_Capture all;
    VLOG_SCOPE_F(1, "detail");
    LOG_F(INFO, "text");
    EXPECT_EQ(g_lines, (std::vector<std::string>{"text"}));
    EXPECT_TRUE(all.has_scope(1, "detail"));
}

TEST_F(Scope, OpenedUnheardItClosesUnheard) {
    {
        LOG_SCOPE_F(INFO, "nobody listens yet");
        loguru::add_callback("lines", keep_line, nullptr, 9);
        LOG_F(INFO, "text");
    }
    EXPECT_EQ(g_lines, (std::vector<std::string>{"text"}));
}

TEST_F(Scope, ListenerThatWentAwayLeavesTheIndentationRight) {
    loguru::add_callback("lines", keep_line, nullptr, 9);
    {
        LOG_SCOPE_F(INFO, "scope");
        loguru::remove_all_callbacks();
    }
    loguru::add_callback("lines", keep_line, nullptr, 9);
    LOG_F(INFO, "text");
    EXPECT_EQ(g_lines, (std::vector<std::string>{"{ scope", "text"}));
}

} // namespace
