#include "formats/Open_Ephys_Files.h"

#include "Made_Recording.h"
#include "Read_Samples.h"
#include "formats/Open_Ephys_Settings.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::recorder;
using Json = nlohmann::json;

constexpr const char* recording = "run/Record Node 101/experiment1/recording1/";

Json structure() {
    return Json::parse(read_file(std::string(recording) + "structure.oebin"));
}

TEST(Open_Ephys_Files, NameOnlyStreamsThatHaveSamples) {
    const Recording_Description description = test::made_description();
    auto writer = make_writer(Format::open_ephys, "run", description);
    EXPECT_TRUE(structure()["continuous"].empty());
    ASSERT_EQ(structure()["events"].size(), 1U);
    EXPECT_EQ(structure()["events"][0]["folder_name"], "MessageCenter/");
    const auto packets = test::made_packets(3, 720, 732, [](std::uint64_t) { return false; });
    writer->write_probe(1, packets);
    writer->finish();
    const Json found = structure();
    ASSERT_EQ(found["continuous"].size(), 2U);
    EXPECT_EQ(found["continuous"][0]["folder_name"], "ORBE-100.ProbeB-AP/");
    EXPECT_EQ(found["continuous"][1]["sample_rate"], 2500);
    // The sync input is low at these samples.
    EXPECT_EQ(found["events"].size(), 1U);
}

TEST(Open_Ephys_Files, DescribeEachChannel) {
    test::make_recording(Format::open_ephys, "run", test::made_description());
    const Json found = structure();
    ASSERT_EQ(found["continuous"].size(), 5U);
    const Json& channel = found["continuous"][0]["channels"][7];
    EXPECT_EQ(channel["channel_name"], "AP8");
    EXPECT_DOUBLE_EQ(channel["bit_volts"], 1171.875 / 50);
    EXPECT_EQ(channel["channel_metadata"][0]["value"][0], 391);
    EXPECT_EQ(channel["channel_metadata"][1]["value"][0], 43.0);
    EXPECT_EQ(channel["channel_metadata"][2]["value"][0], 3900.0);
    EXPECT_DOUBLE_EQ(found["continuous"][4]["channels"][0]["bit_volts"], 10.0 / 32768);
}

TEST(Open_Ephys_Files, HaveTheEdgesOfTheSyncInputAndOfTheComparators) {
    Recording_Description description;
    description.adc = ADC_Description{};
    auto writer = make_writer(Format::open_ephys, "run", description);
    test::Made_ADC_Packets packets;
    for (std::uint64_t sample = 0; sample < 1'001; ++sample) {
        test::add_adc_packet(packets, sample);
    }
    writer->write_adc(packets.infos, packets.rows);
    writer->finish();
    const std::string ttl = std::string(recording) + "events/ORBE-100.ADC/TTL/";
    const auto states = test::read_numbers<std::int16_t>(ttl + "states.npy", 128);
    const auto numbers = test::read_numbers<std::int64_t>(ttl + "sample_numbers.npy", 128);
    const auto times = test::read_numbers<double>(ttl + "timestamps.npy", 128);
    const auto words = test::read_numbers<std::uint64_t>(ttl + "full_words.npy", 128);
    const std::vector<std::int16_t> expected{1,  2, 5,  8, 11,                    // at 0
                                             -2, 4, -5, 7, -8, 10, -11, 13,       // at 500
                                             -1,                                  // at 700
                                             1,  3, -4, 6, -7, 9,  -10, 12, -13}; // at 1000
    EXPECT_EQ(states, expected);
    ASSERT_EQ(numbers.size(), expected.size());
    EXPECT_EQ(numbers[4], 0);
    EXPECT_EQ(numbers[5], 500);
    EXPECT_EQ(numbers[13], 700);
    EXPECT_EQ(numbers[14], 1'000);
    EXPECT_EQ(times[13], 700 / 30'000.0);
    EXPECT_EQ(words[13], 1U << 3 | 1U << 6 | 1U << 9 | 1U << 12);
}

TEST(Open_Ephys_Settings, SaysWhereTheElectrodesAre) {
    Recording_Description description = test::made_description();
    description.probes[0].part_number = "a<\"&";
    const std::string settings = open_ephys_settings(description);
    EXPECT_NE(settings.find("probe_serial_number=\"18005116103\" probe_part_number=\"a&lt;&quot;&amp;\""),
              std::string::npos);
    EXPECT_NE(settings.find("<CHANNELS CH0=\"0\" CH1=\"0\""), std::string::npos);
    EXPECT_NE(settings.find(" CH7=\"1\""), std::string::npos);
    EXPECT_NE(settings.find("<ELECTRODE_XPOS CH0=\"27\" CH1=\"59\" CH2=\"11\" CH3=\"43\" CH4=\"27\""),
              std::string::npos);
    EXPECT_NE(settings.find(" CH7=\"3900\""), std::string::npos);
}

} // namespace
