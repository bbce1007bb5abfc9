// Folders of SpikeGLX itself: what orbe-record writes, without what only orbe-record adds.
#include "folders/Foreign_SpikeGLX.h"

#include "Made_Recording.h"
#include "Temp_Directory.h"
#include "description/Whole_File.h"
#include "folders/SpikeGLX_Metadata.h"
#include "probe_geometry/Probe_Geometry.h"
#include "sources/Folder_Recording.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace Pelgar::ORBE::view {

namespace {

class Foreign_SpikeGLX : public testing::Test {
protected:
    void make(const recorder::Recording_Description& description) const {
        test::make_recording(recorder::Format::spikeglx, path, description);
        std::filesystem::remove(path / recorder::description_file_name);
        std::filesystem::remove(path / "gaps.csv");
    }

    std::filesystem::path meta(const std::string& stream) const {
        const std::string probe = stream.substr(0, stream.find('.'));
        return path / "run_g0" / ("run_g0_" + probe) / ("run_g0_t0." + stream + ".meta");
    }

    void change(const std::string& stream, const std::string& before, const std::string& after) const {
        std::string text = recorder::read_file(meta(stream));
        const std::size_t place = text.find(before);
        ASSERT_NE(place, std::string::npos) << before;
        recorder::write_file(meta(stream), text.replace(place, before.size(), after));
    }

    // And puts back what was changed.
    std::string problem_with(const std::string& stream, const std::string& before,
                             const std::string& after) const {
        const std::string whole = recorder::read_file(meta(stream));
        change(stream, before, after);
        std::string problem;
        try {
            foreign_spikeglx_layout(path);
        } catch (const std::exception& error) {
            problem = error.what();
        }
        recorder::write_file(meta(stream), whole);
        return problem;
    }

    const test::Temp_Directory directory;
    const std::filesystem::path path = directory.path() / "run";
};

} // namespace

TEST_F(Foreign_SpikeGLX, IsKnownFromItsMetadata) {
    const auto made = test::made_description();
    make(made);
    const Folder_Layout layout = foreign_spikeglx_layout(path);
    EXPECT_FALSE(layout.has_gap_table);
    EXPECT_FALSE(layout.description.adc);
    ASSERT_EQ(layout.streams.size(), 4U);
    ASSERT_EQ(layout.description.probes.size(), 2U);
    for (std::size_t place = 0; place < 2; ++place) {
        const recorder::Probe_Description& probe = layout.description.probes[place];
        EXPECT_EQ(probe.port, made.probes[place].port);
        EXPECT_EQ(probe.serial_number, made.probes[place].serial_number);
        EXPECT_EQ(probe.part_number, made.probes[place].part_number);
        for (std::size_t channel = 0; channel < recorder::channel_count; ++channel) {
            auto expected = made.probes[place].channels[channel];
            expected.electrode = recorder::electrode_or_bank_0(made.probes[place], channel);
            ASSERT_EQ(probe.channels[channel], expected) << channel;
        }
    }
}

TEST_F(Foreign_SpikeGLX, IsShownButForItsLosses) {
    auto made = test::made_description();
    made.probes.resize(1);
    made.saved_channels = {5, 6, 7, 200};
    make(made);
    change("imec0.ap", "imSampRate=30000", "imSampRate=29999.757");
    const auto now = Folder_Recording::Clock::now();
    Folder_Recording recording(foreign_spikeglx_layout(path), now);
    recording.look(now + std::chrono::seconds(1));
    EXPECT_EQ(recording.problem(), "");
    EXPECT_EQ(recording.length(), test::made_samples);
    Histories histories(recording.description().probes, false, 1.0, 100.0,
                        recording.description().saved_channels);
    recording.begin(0, histories);
    while (recording.show_next(histories)) {
    }
    const Probe_History::Reading reading(histories.probe(0));
    for (const int channel : made.saved_channels) {
        for (std::uint64_t sample = 0; sample < test::made_samples; sample += 7) {
            std::vector<Extent> value(1);
            reading.band(Band::ap).extents({sample, 1, 1}, static_cast<std::size_t>(channel), 1, value);
            const std::int16_t expected = test::ap_value(1, channel, sample);
            ASSERT_EQ(value[0], (Extent{expected, expected})) << channel << " " << sample;
        }
        std::vector<Extent> value(1);
        reading.band(Band::lfp).extents({500, 1, 1}, static_cast<std::size_t>(channel), 1, value);
        const std::int16_t expected = test::lfp_value(1, channel, 500);
        EXPECT_EQ(value[0], (Extent{expected, expected}));
    }
    const Health health = recording.health_of(0, 10, histories);
    EXPECT_DOUBLE_EQ(health.streams[0].rate, 30'000.0);
    EXPECT_TRUE(std::isnan(health.streams[0].lost_samples)); // nobody has counted
}

TEST_F(Foreign_SpikeGLX, IsRefusedWithAReasonWhereItCannotBeShown) {
    auto made = test::made_description();
    made.adc.reset();
    make(made);
    const std::string ap = "'" + meta("imec0.ap").string() + "' ";

    struct Case {
        const char* before;
        const char* after;
        const char* problem;
    };

    const std::vector<Case> cases{
        {"imMaxInt=512", "imMaxInt=8192", "is of a probe of another kind than orbe-view shows"},
        {"(2 0 0 ", "(2 3 0 ", "is of a probe of another kind than orbe-view shows"},
        {"(2 0 0 ", "(1 0 0 ", "is of a probe of another kind than orbe-view shows"},
        {"(2 0 0 ", "(2.5 0 0 ", "is of a probe of another kind than orbe-view shows"},
        {"(2 0 0 ", "(2 0 7 ", "is of a probe of another kind than orbe-view shows"},
        {"(2 0 0 ", "(2 0 -1 ", "is of a probe of another kind than orbe-view shows"},
        {"(2 0 0 ", "(2 0 1e300 ", "is of a probe of another kind than orbe-view shows"},
        {"(2 0 0 ", "(nan 0 0 ", "is damaged: ~imroTbl is no table of numbers"},
        {"(2 0 0 ", "(2 inf 0 ", "is damaged: ~imroTbl is no table of numbers"},
        {"~imroTbl=(0,384)(", "~imroTbl=(0,384)(x", "is damaged: ~imroTbl is no table of numbers"},
        {"~imroTbl=(0,384)", "~imroTbl=0,384", "is damaged: ~imroTbl is no table"},
        {"imSampRate=30000", "imSampRate=25000", "has another sample rate than orbe-view shows"},
        {"snsSaveChanSubset=0:383,768", "snsSaveChanSubset=0:383:7,768",
         "is damaged: snsSaveChanSubset is no list of numbers"},
        {"snsSaveChanSubset=0:383,768", "snsSaveChanSubset=0:384", "has channels of both bands"},
        {"snsSaveChanSubset=0:383,768", "snsSaveChanSubset=1:383,0,768",
         "has its channels in another order than that of their numbers"},
        {"nSavedChans=385", "nSavedChans=386",
         "is damaged: nSavedChans is not the number of the channels in snsSaveChanSubset"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(problem_with("imec0.ap", each.before, each.after), ap + each.problem) << each.after;
    }
    const std::string other =
        problem_with("imec1.lf", "snsSaveChanSubset=384:768\n", "snsSaveChanSubset=384:766,768,769\n");
    EXPECT_NE(other.find("' holds other channels than '"), std::string::npos) << other;

    std::filesystem::copy_file(meta("imec0.ap"), path / "run_g0" / "run_g0_t1.imec0.ap.meta");
    try {
        foreign_spikeglx_layout(path);
        FAIL();
    } catch (const std::exception& error) {
        EXPECT_NE(std::string(error.what()).find("' holds several recordings, '"), std::string::npos);
    }
    std::filesystem::create_directory(directory.path() / "empty");
    EXPECT_THROW(foreign_spikeglx_layout(directory.path() / "empty"), std::runtime_error);
}

TEST_F(Foreign_SpikeGLX, IsLookedForInSoManyFoldersAndFilesAndNoMore) {
    auto made = test::made_description();
    made.adc.reset();
    make(made);
    const auto problem = [](const std::filesystem::path& folder,
                            std::size_t most_files = 1000) -> std::string {
        try {
            foreign_spikeglx_layout(folder, most_files);
        } catch (const std::exception& error) {
            return error.what();
        }
        return {};
    };
    const auto deep = directory.path() / "1" / "2" / "3";
    std::filesystem::create_directories(deep);
    std::filesystem::rename(path, deep / "run"); // with its probes two levels below that
    EXPECT_EQ(problem(directory.path() / "1" / "2"), "");
    EXPECT_EQ(problem(directory.path() / "1"),
              "'" + (directory.path() / "1").string() +
                  "' is no recording that orbe-view knows: it has neither orbe_recording.json nor, in it and "
                  "in the 4 "
                  "levels of folders below it, the files of a probe that SpikeGLX writes");
    std::filesystem::rename(deep / "run", path);
#ifndef _WIN32
    // What is linked leads round in circles, or to the same run once more.
    std::filesystem::create_directory_symlink(path, path / "again");
    EXPECT_EQ(problem(path), "");
#endif
    EXPECT_EQ(problem(path, 40), "");
    EXPECT_EQ(problem(path, 8),
              "'" + path.string() + "' holds more than 8 files: show the folder of one run of SpikeGLX");
}

// Whatever else bears such a name.
TEST_F(Foreign_SpikeGLX, TakesFilesAloneAndNoneThatIsTooLong) {
    auto made = test::made_description();
    made.adc.reset();
    make(made);
    std::filesystem::create_directory(path / "x.imec7.ap.meta");
    EXPECT_EQ(foreign_spikeglx_layout(path).streams.size(), 4U);
    std::filesystem::resize_file(meta("imec1.lf"), (std::uintmax_t{64} << 20U) + 1);
    EXPECT_THROW(
        {
            try {
                foreign_spikeglx_layout(path);
            } catch (const std::runtime_error& error) {
                EXPECT_EQ(error.what(),
                          "'" + meta("imec1.lf").string() + "' is too long for metadata of SpikeGLX");
                throw;
            }
        },
        std::runtime_error);
}

TEST_F(Foreign_SpikeGLX, NumbersPortsThatAreNotOfOneBox) {
    auto made = test::made_description();
    made.adc.reset();
    make(made);
    change("imec1.ap", "imDatPrb_port=3", "imDatPrb_port=1"); // of another basestation
    const Folder_Layout layout = foreign_spikeglx_layout(path);
    EXPECT_EQ(layout.description.probes[0].port, 1);
    EXPECT_EQ(layout.description.probes[1].port, 2);
}

TEST_F(Foreign_SpikeGLX, NumbersThatArePortsOfNoBoxAreLeftOut) {
    auto made = test::made_description();
    made.adc.reset();
    make(made);
    change("imec1.ap", "imDatPrb_port=3", "imDatPrb_port=1e300");
    const std::string number = std::to_string(made.probes[0].serial_number);
    change("imec0.ap", "imDatPrb_sn=" + number, "imDatPrb_sn=-1");
    const Folder_Layout layout = foreign_spikeglx_layout(path);
    EXPECT_EQ(layout.description.probes[1].port, 2);
    EXPECT_EQ(layout.description.probes[0].serial_number, 0U);
}

TEST(SpikeGLX_Metadata, AreReadLineByLine) {
    const test::Temp_Directory directory;
    const auto path = directory.path() / "a.meta";
    recorder::write_file(path, "a=1.5\r\nlist=3,0:2\nempty=\nwords=a=b\nno sign\n~t=(0,384)(1 2 -3)\n");
    const SpikeGLX_Metadata metadata(path);
    EXPECT_EQ(metadata.number("a"), 1.5);
    EXPECT_EQ(metadata.text("words"), "a=b");
    EXPECT_EQ(metadata.number("words"), std::nullopt);
    EXPECT_EQ(metadata.text("no sign"), std::nullopt);
    EXPECT_EQ(metadata.numbers("list"), (std::vector<int>{3, 0, 1, 2}));
    EXPECT_TRUE(metadata.numbers("empty").empty());
    EXPECT_EQ(metadata.table("~t"), (std::vector<std::vector<double>>{{0, 384}, {1, 2, -3}}));
    EXPECT_THROW(SpikeGLX_Metadata(directory.path() / "none"), std::system_error);
}

} // namespace Pelgar::ORBE::view
