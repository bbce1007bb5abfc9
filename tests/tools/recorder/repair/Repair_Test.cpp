#include "repair/Repair.h"

#include "Format_Name.h"
#include "Made_Recording.h"
#include "Read_Samples.h"
#include "description/Description_File.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::recorder;

using Files = std::map<std::string, std::string>;

// All files of a folder, but the descriptions, which nothing changes.
Files files_of(const std::filesystem::path& folder) {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files[entry.path().lexically_relative(folder).generic_string()] = read_file(entry.path());
        }
    }
    return files;
}

bool is_data(const std::string& name) {
    return name.ends_with(".bin") || name.ends_with(".dat");
}

class Repair : public testing::TestWithParam<std::string> {
protected:
    Format format() const { return format_of(GetParam()).value(); }
};

TEST_P(Repair, LeavesAGoodRecordingAlone) {
    test::make_recording(format(), "run", test::made_description());
    const Files before = files_of("run");
    EXPECT_TRUE(repair_recording("run").empty());
    EXPECT_EQ(files_of("run"), before);
}

TEST_P(Repair, LeavesARecordingAloneWhoseFolderHasAnotherName) {
    test::make_recording(format(), "run", test::made_description());
    std::filesystem::rename("run", "another");
    EXPECT_TRUE(repair_recording("another").empty());
}

// What a killed program leaves is what it has flushed.
TEST_P(Repair, KeepsWhatAKilledRecorderHasWritten) {
    const auto description = test::made_description();
    test::make_recording(format(), "whole", description);
    auto writer = make_writer(format(), "run", description);
    test::write_made_packets(*writer, description);
    // The writer is never told that this is the end.
    Files before = files_of("run");
    repair_recording("run");
    const Files after = files_of("run");
    const Files whole = files_of("whole");
    std::size_t looked_at = 0;
    for (const auto& [name, content] : after) {
        if (!is_data(name)) {
            continue;
        }
        ++looked_at;
        EXPECT_EQ(content, before[name]) << name;
        std::string whole_name = name;
        for (std::size_t at = whole_name.find("run_g0"); at != std::string::npos;
             at = whole_name.find("run_g0")) {
            whole_name.replace(at, 3, "whole");
        }
        ASSERT_TRUE(whole.contains(whole_name)) << whole_name;
        EXPECT_TRUE(whole.at(whole_name).starts_with(content)) << name;
    }
    EXPECT_GE(looked_at, 3U);
    EXPECT_TRUE(repair_recording("run").empty());
    EXPECT_EQ(files_of("run"), after);
}

// Cut where chance wants it, any file is brought into order without losing a whole sample, and stays so.
TEST_P(Repair, MendsFilesThatEndAnywhere) {
    test::make_recording(format(), "whole", test::made_description());
    const Files whole = files_of("whole");
    std::mt19937 random(7);
    for (int round = 0; round < 8; ++round) {
        std::filesystem::remove_all("run");
        std::filesystem::copy("whole", "run", std::filesystem::copy_options::recursive);
        std::map<std::string, std::uint64_t> cut;
        for (const auto& [name, content] : whole) {
            const bool may_be_cut = is_data(name) || name.ends_with(".npy") || name == "gaps.csv";
            if (may_be_cut && name.find("MessageCenter") == std::string::npos && random() % 2 == 0) {
                cut[name] = random() % content.size();
                std::filesystem::resize_file(std::filesystem::path("run") / name, cut[name]);
            }
        }
        repair_recording("run");
        const Files mended = files_of("run");
        for (const auto& [name, size] : cut) {
            if (!is_data(name)) {
                continue;
            }
            const auto found = mended.find(name);
            const std::uint64_t kept = found == mended.end() ? 0 : found->second.size();
            // Less than the longest row is gone.
            EXPECT_LE(size - kept, 769U) << name;
            if (kept > 0) {
                EXPECT_TRUE(whole.at(name).starts_with(found->second)) << name;
            }
        }
        EXPECT_TRUE(repair_recording("run").empty());
        EXPECT_EQ(files_of("run"), mended);
    }
}

TEST_P(Repair, ForgetsGapsThatTheDataEndBefore) {
    test::make_recording(format(), "run", test::made_description());
    const bool is_spikeglx = format() == Format::spikeglx;
    const std::string name = is_spikeglx ? "imec1.ap" : "ORBE-100.ProbeB-AP";
    const std::string adc = is_spikeglx ? "obx0" : "ORBE-100.ADC";
    const std::filesystem::path file =
        is_spikeglx
            ? "run/run_g0/run_g0_imec1/run_g0_t0.imec1.ap.bin"
            : "run/Record Node 101/experiment1/recording1/continuous/ORBE-100.ProbeB-AP/continuous.dat";
    const std::uint64_t row = is_spikeglx ? 770 : 768;
    const std::string table = read_file("run/gaps.csv");
    EXPECT_NE(table.find(name + ",3000,100\n"), std::string::npos);
    EXPECT_NE(table.find(adc + ",7001,1\n"), std::string::npos);
    std::filesystem::resize_file(file, 3'040 * row);
    repair_recording("run");
    EXPECT_NE(read_file("run/gaps.csv").find(name + ",3000,40\n"), std::string::npos);
    std::filesystem::resize_file(file, 3'000 * row);
    repair_recording("run");
    EXPECT_EQ(read_file("run/gaps.csv").find(name), std::string::npos);
    EXPECT_NE(read_file("run/gaps.csv").find(adc + ",7001,1\n"), std::string::npos);
}

TEST_P(Repair, WritesMetadataAnewThatAreGone) {
    test::make_recording(format(), "run", test::made_description());
    const Files before = files_of("run");
    for (const auto& [name, content] : before) {
        if (name.ends_with(".meta") || name.ends_with(".oebin") || name.ends_with("gaps.csv") ||
            name.ends_with("timestamps.npy")) {
            if (name.find("events") == std::string::npos) {
                std::filesystem::remove(std::filesystem::path("run") / name);
            }
        }
    }
    EXPECT_GE(repair_recording("run").size(), 5U);
    Files after = files_of("run");
    for (const auto& [name, content] : before) {
        if (name != "gaps.csv") { // what nobody can know
            EXPECT_EQ(after[name], content) << name;
        }
    }
}

TEST_P(Repair, TellsWhatItDid) {
    test::make_recording(format(), "run", test::made_description());
    const bool is_spikeglx = format() == Format::spikeglx;
    const std::string file = is_spikeglx ? "run_g0/run_g0_t0.obx0.obx.bin"
                                         : "Record Node 101/experiment1/recording1/continuous/ORBE-100.ADC/"
                                           "continuous.dat";
    const std::filesystem::path path = std::filesystem::path("run") / file;
    std::filesystem::resize_file(path, std::filesystem::file_size(path) - 1);
    const auto account = repair_recording("run");
    ASSERT_GE(account.size(), 2U);
    EXPECT_EQ(account[0], file + ": cut by " + (is_spikeglx ? "27" : "23") + " bytes");
}

INSTANTIATE_TEST_SUITE_P(Formats, Repair, testing::Values("spikeglx", "open-ephys"), test::format_test_name);

TEST(Repair_Of_No_Recording, SaysSo) {
    std::filesystem::create_directory("empty");
    EXPECT_THROW(repair_recording("empty"), std::system_error);
    write_description("empty", "wax", test::made_description());
    try {
        repair_recording("empty");
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "'empty' has the format 'wax', which is not known here");
    }
}

TEST(Repair_Of_A_Raw_Recording, HasNothingToDo) {
    write_description(".", "raw", test::made_description());
    EXPECT_TRUE(repair_recording(".").empty());
}

} // namespace
