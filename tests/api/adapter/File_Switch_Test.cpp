#include "adapter/File_Switch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

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

// The first line of a switch file with exactly these bytes in it.
std::string first_line_of(std::string_view bytes) {
    std::ofstream("A_SWITCH", std::ios::binary | std::ios::trunc) << bytes;
    return probe_file_switch("A_SWITCH").first_line;
}

TEST(FileSwitch, CarriageReturnDoesNotBelongToTheLine) {
    EXPECT_EQ(first_line_of("2\r\n"), "2");
}

TEST(FileSwitch, BlanksAtTheEndDoNotBelongToTheLine) {
    EXPECT_EQ(first_line_of("a recording.bin \t \r\nsecond line\n"), "a recording.bin");
    EXPECT_EQ(first_line_of("a recording.bin  "), "a recording.bin");
    EXPECT_EQ(first_line_of(" \t\r\n"), "");
    EXPECT_EQ(first_line_of(" a recording.bin"), " a recording.bin") << "those at the beginning do";
}

TEST(FileSwitch, ByteOrderMarkDoesNotBelongToTheLine) {
    EXPECT_EQ(first_line_of("\xEF\xBB\xBF"
                            "a recording.bin\r\n"),
              "a recording.bin");
    EXPECT_EQ(first_line_of("\xEF\xBB\xBF"), "");
    EXPECT_EQ(first_line_of("\xEF\xBB"), "\xEF\xBB") << "a piece of one is no mark";
}

TEST(FileSwitch, TextOfTwoBytesACharacterIsReadAsFarAsItIsAscii) {
    using namespace std::string_view_literals;
    EXPECT_EQ(first_line_of("\xFF\xFE"
                            "a\0.\0b\0i\0n\0\r\0\n\0x\0"sv),
              "a.bin");
    EXPECT_EQ(first_line_of("\xFE\xFF\0a\0.\0b\0\r\0\n\0x"sv), "a.b");
    EXPECT_EQ(first_line_of("\xFF\xFE"
                            "a\0\xE4\0b\x01"sv),
              "a??");
    EXPECT_EQ(first_line_of("\xFF\xFE"sv), "");
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
