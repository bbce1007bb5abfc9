#include "adapter/Raw_Data_File.h"

#include "Log_Capture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#if defined(__linux__)
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Pelgar::ORBE::npoe_adapter::keep_raw_data_file;
using Pelgar::ORBE::test::Log_Capture;
using Names = std::set<std::string>;

class RawDataFile : public testing::Test {
protected:
    static void write(const char* name, const std::string& content) {
        std::ofstream(name, std::ios::binary) << content;
    }

    static std::string content_of(const std::string& name) {
        std::ostringstream content;
        content << std::ifstream(name, std::ios::binary).rdbuf();
        return content.str();
    }

    // Sets the file's last change to a minute that the test knows, and answers it as names show it.
    static std::string date() {
        std::tm fields{};
        fields.tm_year = 2026 - 1900;
        fields.tm_mon = 10;
        fields.tm_mday = 21;
        fields.tm_hour = 18;
        fields.tm_min = 30;
        fields.tm_sec = 5;
        fields.tm_isdst = -1;
        const auto time = std::chrono::system_clock::from_time_t(std::mktime(&fields)) + 500ms;
        const auto age = std::chrono::system_clock::now() - time;
        fs::last_write_time("raw_data.bin",
                            fs::file_time_type::clock::now() -
                                std::chrono::duration_cast<fs::file_time_type::duration>(age));
        return "2026-11-21_18-30-05";
    }

    static Names files() {
        Names names;
        for (const auto& entry : fs::directory_iterator(".")) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    Log_Capture m_log;
};

TEST_F(RawDataFile, MissingAndEmptyOnesAreLeftAlone) {
    keep_raw_data_file({});
    EXPECT_EQ(files(), Names{});
    write("raw_data.bin", "");
    keep_raw_data_file({});
    EXPECT_EQ(files(), Names{"raw_data.bin"});
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(RawDataFile, OneWithContentIsKeptUnderANameWithItsDate) {
    write("raw_data.bin", "a day's work");
    const std::string kept = "raw_data_" + date() + ".bin";
    write("another.bin", "a recording");
    keep_raw_data_file({"another.bin", true});
    EXPECT_EQ(files(), (Names{"another.bin", kept}));
    EXPECT_EQ(content_of(kept), "a day's work");
    EXPECT_EQ(m_log.count(-1, "raw_data.bin was not empty and is kept as " + kept), 1);
}

TEST_F(RawDataFile, NameThatIsTakenIsCountedOn) {
    Names expected;
    for (const char* number : {"", "_2", "_3"}) {
        write("raw_data.bin", std::string("content") + number);
        const std::string kept = "raw_data_" + date() + number + ".bin";
        keep_raw_data_file({});
        expected.insert(kept);
        EXPECT_EQ(files(), expected);
        EXPECT_EQ(content_of(kept), std::string("content") + number);
    }
}

TEST_F(RawDataFile, RecordingThatIsAboutToBePlayedStaysWhereItIs) {
    write("raw_data.bin", "a recording");
    for (const std::string& recording : {std::string("raw_data.bin"), std::string("./raw_data.bin"),
                                         fs::absolute("raw_data.bin").string()}) {
        keep_raw_data_file({recording, true});
        EXPECT_EQ(files(), Names{"raw_data.bin"}) << recording;
    }
    EXPECT_EQ(content_of("raw_data.bin"), "a recording");
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(RawDataFile, StaysWhereItIsWhenTheSwitchMayHaveMeantIt) {
    write("raw_data.bin", "a recording");
    for (const char* misspelt : {"\"raw_data.bin\"", " raw_data.bin", "raw_data", ""}) {
        keep_raw_data_file({misspelt, true});
        EXPECT_EQ(files(), Names{"raw_data.bin"}) << misspelt;
    }
    EXPECT_EQ(content_of("raw_data.bin"), "a recording");
}

#if defined(__linux__)
TEST_F(RawDataFile, RecordingUnderASecondNameStaysWhereItIs) {
    write("recording.bin", "a recording");
    fs::create_symlink("recording.bin", "raw_data.bin");
    keep_raw_data_file({"recording.bin", true});
    EXPECT_EQ(files(), (Names{"raw_data.bin", "recording.bin"}));
}

TEST_F(RawDataFile, OneThatCannotBeMovedStaysAsItIs) {
    write("raw_data.bin", "a day's work");
    ASSERT_EQ(chmod(".", 0555), 0);
    // The superuser writes everywhere, so the test gives that up for a while.
    const bool superuser = geteuid() == 0;
    ASSERT_EQ(superuser ? seteuid(65534) : 0, 0);
    keep_raw_data_file({});
    ASSERT_EQ(superuser ? seteuid(0) : 0, 0);
    ASSERT_EQ(chmod(".", 0755), 0);
    EXPECT_EQ(files(), Names{"raw_data.bin"});
    EXPECT_EQ(content_of("raw_data.bin"), "a day's work");
    EXPECT_EQ(m_log.count(-2, "raw_data.bin is not empty and stays as it is : Permission denied"), 1);
}
#endif

} // namespace
