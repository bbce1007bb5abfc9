#include "adapter/File_Switch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

using Pelgar::ORBE::npoe_adapter::probe_file_switch;

std::string content_of(const char* path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

TEST(FileSwitch, PresentFileAnswersItsFirstLine) {
    std::ofstream("A_SWITCH") << "/data/recording.bin\nsecond line\n";
    testing::internal::CaptureStdout();
    const auto found = probe_file_switch("A_SWITCH");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "A_SWITCH file present in working directory\n");
    EXPECT_TRUE(found.present);
    EXPECT_EQ(found.first_line, "/data/recording.bin");
}

TEST(FileSwitch, MissingFileAnswersAbsent) {
    testing::internal::CaptureStdout();
    const auto found = probe_file_switch("NO_SWITCH");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "NO_SWITCH not present in working directory\n");
    EXPECT_FALSE(found.present);
    EXPECT_EQ(found.first_line, "");
}

TEST(FileSwitch, EmptyFileIsPresent) {
    std::ofstream("EMPTY_SWITCH").close();
    const auto found = probe_file_switch("EMPTY_SWITCH");
    EXPECT_TRUE(found.present);
    EXPECT_EQ(found.first_line, "");
}

TEST(FileSwitch, CarriageReturnDoesNotBelongToTheLine) {
    std::ofstream("CRLF_SWITCH", std::ios::binary) << "2\r\n";
    EXPECT_EQ(probe_file_switch("CRLF_SWITCH").first_line, "2");
}

TEST(FileSwitch, EveryProbeLeavesTheMarkerFile) {
    probe_file_switch("NO_SWITCH");
    EXPECT_EQ(content_of("ORBE_DFGMZ_ADAPTER_SI"), "Test");
    std::ofstream("ORBE_DFGMZ_ADAPTER_SI") << "something longer than the marker";
    probe_file_switch("NO_SWITCH");
    EXPECT_EQ(content_of("ORBE_DFGMZ_ADAPTER_SI"), "Test");
    std::filesystem::remove("ORBE_DFGMZ_ADAPTER_SI");
    probe_file_switch("NO_SWITCH");
    EXPECT_EQ(content_of("ORBE_DFGMZ_ADAPTER_SI"), "Test");
}

} // namespace
