#include "formats/SpikeGLX_Files.h"

#include "Made_Recording.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::recorder;

std::map<std::string, std::string> fields_of(const std::string& text) {
    std::map<std::string, std::string> fields;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t sign = line.find('=');
        EXPECT_NE(sign, std::string::npos) << line;
        EXPECT_TRUE(fields.emplace(line.substr(0, sign), line.substr(sign + 1)).second) << line;
    }
    return fields;
}

TEST(SpikeGLX_Files, AreNamedAfterTheFolder) {
    const auto streams = spikeglx_streams("data/rat.7", test::made_description());
    ASSERT_EQ(streams.size(), 5U);
    EXPECT_EQ(streams[1].data_path.generic_string(),
              "data/rat.7/rat_7_g0/rat_7_g0_imec0/rat_7_g0_t0.imec0.lf.bin");
    EXPECT_EQ(streams[4].meta_path.generic_string(), "data/rat.7/rat_7_g0/rat_7_g0_t0.obx0.obx.meta");
    EXPECT_EQ(spikeglx_run_name("rat/"), "rat");
    EXPECT_EQ(spikeglx_run_name("rat/."), "rat");
    EXPECT_EQ(spikeglx_run_name("mouse/../rat"), "rat");
    Recording_Description named = test::made_description();
    named.run_name = "rat";
    EXPECT_EQ(spikeglx_streams("elsewhere", named)[0].data_path.generic_string(),
              "elsewhere/rat_g0/rat_g0_imec0/rat_g0_t0.imec0.ap.bin");
}

TEST(SpikeGLX_Files, SayWhatAProbesFileHolds) {
    Recording_Description description = test::made_description();
    description.saved_channels = {0, 1, 2, 7, 9};
    description.probes[1].channels[9].is_standby = true;
    const auto streams = spikeglx_streams("run", description);
    auto fields = fields_of(spikeglx_metadata(streams[2], description, 6 * 2 * 3'000));
    EXPECT_EQ(fields["typeThis"], "imec");
    EXPECT_EQ(fields["fileCreateTime"], "2024-05-31T12:00:00");
    EXPECT_EQ(fields["fileSizeBytes"], "36000");
    EXPECT_EQ(fields["fileTimeSecs"], "0.1");
    EXPECT_EQ(fields["imSampRate"], "30000");
    EXPECT_EQ(fields["nSavedChans"], "6");
    EXPECT_EQ(fields["acqApLfSy"], "384,384,1");
    EXPECT_EQ(fields["snsApLfSy"], "5,0,1");
    EXPECT_EQ(fields["snsSaveChanSubset"], "0:2,7,9,768");
    EXPECT_EQ(fields["imDatPrb_port"], "3");
    EXPECT_EQ(fields["imDatPrb_sn"], "18005116105");
    EXPECT_EQ(fields["imDatPrb_pn"], "PRB_1_4_0480_1");
    EXPECT_EQ(fields["imStdby"], "9");
    EXPECT_EQ(fields["~snsChanMap"], "(384,384,1)(AP0;0:0)(AP1;1:1)(AP2;2:2)(AP7;7:3)(AP9;9:4)(SY0;768:5)");
    EXPECT_EQ(fields["~snsGeomMap"],
              "(PRB_1_4_0480_1,1,0,70)(0:27:0:1)(0:59:0:1)(0:11:20:1)(0:43:3900:1)(0:59:80:0)");
    EXPECT_EQ(fields["~snsShankMap"], "(1,2,480)(0:0:0:1)(0:1:0:1)(0:0:1:1)(0:1:195:1)(0:1:4:0)");
    EXPECT_EQ(fields["~imroTbl"].substr(0, 44), "(0,384)(0 0 0 500 50 1)(1 0 0 1000 50 1)(2 0");
    EXPECT_NE(fields["~imroTbl"].find("(7 1 0 250 125 1)"), std::string::npos);
    EXPECT_EQ(fields["~muxTbl"].substr(0, 24), "(32,12)(0 1 24 25 48 49 ");
}

TEST(SpikeGLX_Files, SayWhatTheLFPBandHolds) {
    const Recording_Description description = test::made_description();
    auto fields = fields_of(spikeglx_metadata(spikeglx_streams("run", description)[1], description, 0));
    EXPECT_EQ(fields["imSampRate"], "2500");
    EXPECT_EQ(fields["snsApLfSy"], "0,384,1");
    EXPECT_EQ(fields["snsSaveChanSubset"], "384:768");
    EXPECT_EQ(fields["fileTimeSecs"], "0");
    EXPECT_EQ(fields["~snsChanMap"].substr(0, 33), "(384,384,1)(LF0;384:0)(LF1;385:1)");
}

TEST(SpikeGLX_Files, SayWhatTheADCInputsFileHolds) {
    const Recording_Description description = test::made_description();
    auto fields = fields_of(spikeglx_metadata(spikeglx_streams("run", description)[4], description, 0));
    EXPECT_EQ(fields["typeThis"], "obx");
    EXPECT_EQ(fields["snsXaDwSy"], "12,1,1");
    EXPECT_EQ(fields["obAiRangeMax"], "10");
    EXPECT_EQ(fields["obMaxInt"], "32768");
    EXPECT_EQ(fields["niSampRate"], fields["obSampRate"]);
    EXPECT_EQ(fields["snsMnMaXaDw"], "0,0,12,2");
}

TEST(SpikeGLX_Files, ChangeNothingButTheSize) {
    const Recording_Description description = test::made_description();
    const auto stream = spikeglx_streams("run", description)[0];
    const std::string notes = "userNotes=the one with the long tail\n";
    EXPECT_EQ(with_file_size(notes + spikeglx_metadata(stream, description, 0), stream, 7'700),
              notes + spikeglx_metadata(stream, description, 7'700));
}

} // namespace
