#include "Log_Capture.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// As <windows.h> has it; what follows must compile and log errors all the same.
#if !defined(ERROR)
#define ERROR 0
#endif

namespace {

using Pelgar::ORBE::test::Log_Capture;

constexpr std::size_t preamble_length = 98;

// The lines of a log without their preambles.
std::vector<std::string> texts_of(std::istream& log) {
    std::vector<std::string> texts;
    for (std::string line; std::getline(log, line);) {
        const auto end_of_preamble = line.find("| ");
        EXPECT_EQ(end_of_preamble, preamble_length - 2) << line;
        texts.push_back(line.substr(end_of_preamble + 2));
    }
    return texts;
}

std::vector<std::string> texts_in_file(const char* path) {
    std::ifstream file(path);
    return texts_of(file);
}

TEST(Loguru, LogsAtTheVerbosityGiven) {
    const Log_Capture log;
    LOG_F(ERROR, "an error");
    LOG_F(WARNING, "a warning");
    LOG_F(INFO, "%s %d", "slotID :", 4);
    VLOG_F(9, "detail");
    const int chosen = 5;
    VLOG_F(chosen, "chosen");
    EXPECT_EQ(log.count(-2, "an error"), 1);
    EXPECT_EQ(log.count(-1, "a warning"), 1);
    EXPECT_EQ(log.count(0, "slotID : 4"), 1);
    EXPECT_EQ(log.count(9, "detail"), 1);
    EXPECT_EQ(log.count(5, "chosen"), 1);
    EXPECT_EQ(log.lines().size(), 5U);
}

TEST(Loguru, ArgumentsAreNotEvaluatedWhenNobodyListens) {
    int evaluated = 0;
    LOG_F(INFO, "%d", ++evaluated);
    EXPECT_EQ(evaluated, 0);
    const Log_Capture log;
    LOG_F(INFO, "%d", ++evaluated);
    VLOG_F(loguru::Verbosity_MAX + 1, "%d", ++evaluated);
    EXPECT_EQ(evaluated, 1);
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"1"}));
}

TEST(Loguru, StandardErrorGetsRecordsUpToItsVerbosity) {
    loguru::g_stderr_verbosity = loguru::Verbosity_INFO;
    testing::internal::CaptureStderr();
    {
        LOG_SCOPE_F(INFO, "openBS");
        VLOG_F(1, "too much detail");
        LOG_F(ERROR, "Open driver failed");
    }
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    LOG_F(ERROR, "unheard");
    std::istringstream printed(testing::internal::GetCapturedStderr());
    const std::vector<std::string> texts = texts_of(printed);
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts[0], "{ openBS");
    EXPECT_EQ(texts[1], ".   Open driver failed");
    EXPECT_TRUE(texts[2].starts_with("} ") && texts[2].ends_with(" s: openBS")) << texts[2];
}

TEST(Loguru, FileStartsAnewOrGoesOn) {
    std::ofstream("kept.log", std::ios::binary) << std::string(preamble_length - 2, ' ') << "| from before\n";
    std::filesystem::copy_file("kept.log", "new.log");
    EXPECT_TRUE(loguru::add_file("new.log", loguru::Truncate, 9));
    EXPECT_TRUE(loguru::add_file("kept.log", loguru::Append, loguru::Verbosity_INFO));
    LOG_F(INFO, "text");
    VLOG_F(9, "detail");
    EXPECT_EQ(texts_in_file("new.log"), (std::vector<std::string>{"text", "detail"}));
    EXPECT_EQ(texts_in_file("kept.log"), (std::vector<std::string>{"from before", "text"}));
    EXPECT_TRUE(loguru::remove_callback("new.log"));
    LOG_F(INFO, "more");
    EXPECT_EQ(texts_in_file("new.log"), (std::vector<std::string>{"text", "detail"}));
    EXPECT_EQ(texts_in_file("kept.log"), (std::vector<std::string>{"from before", "text", "more"}));
    EXPECT_TRUE(loguru::remove_callback("kept.log"));
}

TEST(Loguru, FileThatCannotBeOpenedIsLogged) {
    const Log_Capture log;
    EXPECT_FALSE(loguru::add_file("no/such/folder.log", loguru::Truncate, 9));
    EXPECT_EQ(log.count(-2, "Failed to open 'no/such/folder.log': No such file or directory"), 1);
    EXPECT_FALSE(loguru::remove_callback("no/such/folder.log"));
}

TEST(Loguru, CallbackGetsEveryPartOfTheRecord) {
    static std::vector<std::string> parts;
    static int user_data = 0;
    loguru::add_callback(
        "parts",
        [](void* data, const loguru::Message& message) {
            EXPECT_EQ(data, &user_data);
            EXPECT_EQ(message.verbosity, -1);
            EXPECT_EQ(message.line, 123U);
            EXPECT_EQ(std::string(message.preamble).size(), preamble_length);
            parts = {message.filename, message.indentation, message.prefix, message.message};
        },
        &user_data, 9);
    loguru::log(loguru::Verbosity_WARNING, "a/b.cpp", 123, "%d %s", 1, "text");
    EXPECT_EQ(parts, (std::vector<std::string>{"a/b.cpp", "", "", "1 text"}));
    EXPECT_TRUE(loguru::remove_callback("parts"));
    EXPECT_FALSE(loguru::remove_callback("parts"));
}

TEST(LoguruDeathTest, FatalRecordIsLoggedAndEndsTheProcess) {
    EXPECT_DEATH(
        {
            loguru::g_stderr_verbosity = loguru::Verbosity_FATAL;
            LOG_F(FATAL, "no way on");
        },
        "FATAL. no way on");
}

} // namespace
