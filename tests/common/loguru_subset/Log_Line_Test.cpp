#include "Log_Line.h"

#include <gtest/gtest.h>

#include <ctime>
#include <regex>
#include <sstream>
#include <string>
#include <thread>

namespace {

using namespace loguru::detail;

std::string preamble(loguru::Verbosity verbosity, const char* file = "api/NeuropixAPI.cpp",
                     unsigned line = 104) {
    return preamble_of({verbosity, file, line, "", "text"});
}

TEST(LogLine, PreambleHasDateTimeUptimeThreadPlaceAndLevel) {
    const std::regex shape(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \( *\d+\.\d{3}s\) \[thread   1\] )"
                           R"( {21}NeuropixAPI\.cpp:104   INFO\| )");
    const std::string text = preamble(loguru::Verbosity_INFO);
    EXPECT_TRUE(std::regex_match(text, shape)) << text;
}

TEST(LogLine, DateIsTheLocalOne) {
    // Around midnight the date may change between the two looks at it.
    const auto today = [] {
        const std::time_t now = std::time(nullptr);
        char text[16] = {};
        std::strftime(text, sizeof(text), "%Y-%m-%d", std::localtime(&now));
        return std::string(text);
    };
    const std::string before = today();
    const std::string date = preamble(0).substr(0, before.size());
    EXPECT_TRUE(date == before || date == today()) << date;
}

TEST(LogLine, LevelsHaveNamesDetailsHaveNumbers) {
    EXPECT_TRUE(preamble(loguru::Verbosity_FATAL).ends_with(":104  FATAL| "));
    EXPECT_TRUE(preamble(loguru::Verbosity_ERROR).ends_with(":104  ERROR| "));
    EXPECT_TRUE(preamble(loguru::Verbosity_WARNING).ends_with(":104   WARN| "));
    EXPECT_TRUE(preamble(loguru::Verbosity_INFO).ends_with(":104   INFO| "));
    EXPECT_TRUE(preamble(9).ends_with(":104      9| "));
}

TEST(LogLine, FileStandsWithoutItsFolders) {
    EXPECT_TRUE(preamble(0, "plain.cpp", 7).ends_with(" plain.cpp:7     INFO| "));
    EXPECT_TRUE(preamble(0, "a/b/c.cpp", 7).ends_with(" c.cpp:7     INFO| "));
    EXPECT_TRUE(preamble(0, "D:\\a\\b/c.cpp", 12345).ends_with(" c.cpp:12345  INFO| "));
}

TEST(LogLine, PreamblesOfUsualFilesAreEquallyLong) {
    EXPECT_EQ(preamble(-2, "a.cpp", 1).size(),
              preamble(9, "a/long/way/to/M_NP_Probe_Config.cpp", 1234).size());
}

TEST(LogLine, ThreadsAreNumberedAsTheyFirstLog) {
    EXPECT_NE(preamble(0).find("[thread   1]"), std::string::npos);
    std::thread([] { EXPECT_NE(preamble(0).find("[thread   2]"), std::string::npos); }).join();
    EXPECT_NE(preamble(0).find("[thread   1]"), std::string::npos);
}

TEST(LogLine, LineIsPreambleIndentationPrefixAndText) {
    testing::internal::CaptureStderr();
    write_line(stderr, {0, "file", 1, "preamble| ", ".   ", "{ ", "openBS"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "preamble| .   { openBS\n");
}

} // namespace
