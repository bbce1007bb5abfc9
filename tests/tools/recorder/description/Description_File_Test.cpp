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
    const auto with = [&good](const std::string& text, const std::string& replacement) {
        std::string changed = good;
        EXPECT_NE(changed.find(text), std::string::npos) << text;
        return changed.replace(changed.find(text), text.size(), replacement);
    };
    EXPECT_EQ(error_of(with("2024-05-31", "2024-06-31")), "the start time is none");
    EXPECT_EQ(error_of(with("\"port\": 3", "\"port\": 5")), "there is no port 5");
    EXPECT_EQ(error_of(with("391", "960")), "there is no electrode 960");
    EXPECT_EQ(error_of(with("3000", "0")), "there is no AP gain 0");
    EXPECT_EQ(error_of(with("\"input_count\": 12", "\"input_count\": 13")),
              "there is no number of ADC inputs 13");
    EXPECT_EQ(error_of(with("\"range_volts\": 10.0", "\"range_volts\": 0")),
              "the range of the ADC inputs is not above 0");
    EXPECT_EQ(error_of(with("\t\t1,", "")), "none"); // a channel that is not saved
    EXPECT_EQ(error_of(with("\t\t1,", "\t\t9,")), "the saved channels are not ascending numbers below 384");
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
