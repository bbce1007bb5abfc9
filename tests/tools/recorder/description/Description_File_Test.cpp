#include "description/Description_File.h"

#include "Made_Recording.h"
#include "description/Time_Text.h"

#include <gtest/gtest.h>

#include <string>
#include <system_error>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::recorder;

std::string error_of(const std::string& text) {
    try {
        from_json(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "none";
}

TEST(Description_File, SaysEverythingOfARecording) {
    Recording_Description description = test::made_description();
    description.run_name = "monday";
    description.first_sample = 36;
    description.saved_channels = {0, 7, 383};
    description.probes[0].channels[3].is_standby = true;
    description.probes[1].channels[4].reference = 3;
    description.probes[1].ap_filter = false;
    write_description(".", "spikeglx", description);
    const Described_Folder read = read_description(".");
    EXPECT_EQ(read.format, "spikeglx");
    EXPECT_EQ(read.description, description);
}

TEST(Description_File, HasNoADCInputsWhereTheRecordingHasNone) {
    Recording_Description description = test::made_description();
    description.adc.reset();
    EXPECT_FALSE(from_json(to_json(description, "raw")).description.adc);
}

TEST(Description_File, TellsWhatIsWrong) {
    const std::string good = to_json(test::made_description(), "raw");
    std::string bad_time = good;
    bad_time.replace(bad_time.find("2024-05-31"), 10, "2024-06-31");
    EXPECT_EQ(error_of(bad_time), "the start time is none");
    std::string bad_port = good;
    bad_port.replace(bad_port.find("\"port\": 3"), 9, "\"port\": 5");
    EXPECT_EQ(error_of(bad_port), "there is no port 5");
    EXPECT_EQ(error_of(good), "none");
    EXPECT_NE(error_of(good.substr(0, good.size() / 2)).find("parse error"), std::string::npos);
    EXPECT_NE(error_of("{}").find("'format' not found"), std::string::npos);
}

TEST(Description_File, SaysWhichFileIsNotThere) {
    try {
        read_description("nowhere");
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
        EXPECT_NE(std::string(error.what()).find("orbe_recording.json"), std::string::npos);
    }
}

TEST(Time_Text, IsReadAsItWasWritten) {
    const Start_Time time(std::chrono::milliseconds(1'717'158'896'789));
    EXPECT_EQ(time_text(time), "2024-05-31T12:34:56.789Z");
    EXPECT_EQ(time_from_text("2024-05-31T12:34:56.789Z"), time);
    for (const char* text : {"", "yesterday", "2024-05-31T25:34:56.789Z", "2024-05-31T12:34:56.789Zulu"}) {
        EXPECT_FALSE(time_from_text(text)) << text;
    }
}

} // namespace
