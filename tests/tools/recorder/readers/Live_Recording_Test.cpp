// Holds what is recorded while the simulation plays a recording against what is exported of the same one.
#include "Format_Name.h"
#include "Program_Run.h"
#include "description/Whole_File.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

namespace {

using namespace Pelgar::ORBE;
using recorder::read_file;
using test::run_program;

class Live_Recording : public testing::TestWithParam<std::string> {};

// All that is of the stream and not of the program that wrote it.
std::set<std::string> data_files(const std::filesystem::path& folder) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string name = entry.path().lexically_relative(folder).generic_string();
        const std::string extension = entry.path().extension().string();
        const bool is_data =
            extension == ".bin" || extension == ".dat" || extension == ".npy" || extension == ".csv";
        if (is_data && name.find("MessageCenter") == std::string::npos) {
            files.insert(name);
        }
    }
    return files;
}

TEST_P(Live_Recording, HoldsTheBytesOfAnExport) {
    auto run = run_program(ORBE_RECORDING_PROGRAM
                           " make raw.bin --seconds 1.5 --ports 1,2,4 --signal spikes "
                           "--fault lost-row~1e-6 --fault wrong-tag~1e-6 --fault cut-frame:rhd@9000");
    ASSERT_EQ(run.exit_code, 0) << run.errors;
    std::filesystem::create_directory("live");
    // Something is lost, which is what 3 says.
    run = run_program(ORBE_RECORD_PROGRAM " live/run --simulation raw.bin --format " + GetParam());
    EXPECT_EQ(run.exit_code, 3) << run.errors;
    std::filesystem::create_directory("exported");
    run = run_program(ORBE_RECORDING_PROGRAM " export raw.bin exported/run --format " + GetParam());
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    const std::set<std::string> files = data_files("live/run");
    EXPECT_GE(files.size(), 8U);
    EXPECT_EQ(data_files("exported/run"), files);
    EXPECT_GT(read_file("live/run/gaps.csv").size(), 100U);
    for (const std::string& file : files) {
        EXPECT_TRUE(read_file("live/run/" + file) == read_file("exported/run/" + file)) << file;
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, Live_Recording, testing::Values("spikeglx", "open-ephys"),
                         test::format_test_name);

} // namespace
