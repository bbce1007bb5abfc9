// Runs orbe-bench as a user does, on its quickest stage.
#include "Program_Run.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE::test;

Program_Run bench(const std::string& arguments) {
    return run_program("TMPDIR=$PWD/scratch " ORBE_BENCH_PROGRAM " --benchmark_min_time=0.001 " + arguments);
}

class BenchProgram : public testing::Test {
protected:
    BenchProgram() { std::filesystem::create_directory("scratch"); }

    // What the program has left in the current folder and in the one for temporary files.
    static std::vector<std::string> files_left() {
        std::vector<std::string> files;
        for (const char* directory : {".", "scratch"}) {
            for (const auto& entry : std::filesystem::directory_iterator(directory)) {
                const std::string name = entry.path().filename().string();
                if (name != "scratch" && !name.starts_with("run-")) {
                    files.push_back(name);
                }
            }
        }
        return files;
    }
};

TEST_F(BenchProgram, WritesNothingIntoTheCurrentFolder) {
    // The whole demultiplexer, which opens files, and the stage that loads one.
    for (const std::string stage : {"row_split", "gain_correction"}) {
        const Program_Run run = bench("--stages --benchmark_filter=" + stage);
        EXPECT_EQ(run.exit_code, 0) << run.errors;
        EXPECT_TRUE(run.output.starts_with("stage ")) << run.output;
        EXPECT_NE(run.output.find("\n" + stage + " "), std::string::npos) << run.output;
        EXPECT_EQ(run.output.find("no gain calibration"), std::string::npos);
        EXPECT_EQ(files_left(), std::vector<std::string>{});
    }
}

TEST_F(BenchProgram, ItsReportLandsWhereTheUserMeans) {
    EXPECT_EQ(bench("--stages --benchmark_filter=rhd_frames --benchmark_out=report.json").exit_code, 0);
    EXPECT_EQ(files_left(), std::vector<std::string>{"report.json"});
    EXPECT_GT(std::filesystem::file_size("report.json"), 100U);
}

TEST_F(BenchProgram, ExportsBesideACopyAndLeavesNothingBehind) {
    const Program_Run run = bench("--export --seconds 0.2 --json figures.json");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    for (const std::string name : {"plain copy", "export spikeglx", "export open-ephys"}) {
        EXPECT_NE(run.output.find("\n  " + name + " "), std::string::npos) << run.output;
    }
    EXPECT_EQ(files_left(), std::vector<std::string>{"figures.json"});
}

TEST_F(BenchProgram, TheWholeRoadLeavesNothingBehindEither) {
    const Program_Run run = bench("--road --seconds 0.1 --json figures.json");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(files_left(), std::vector<std::string>{"figures.json"});
}

TEST_F(BenchProgram, OutputThatIsLostIsAFailure) {
    for (const std::string arguments : {"--stages --benchmark_filter=rhd_frames", "--version", "--help"}) {
        const Program_Run run = run_program("(" ORBE_BENCH_PROGRAM " " + arguments + " >/dev/full)");
        EXPECT_EQ(run.exit_code, 1) << arguments;
        EXPECT_TRUE(run.errors.starts_with("orbe-bench: standard output cannot be written")) << run.errors;
    }
}

TEST_F(BenchProgram, TellsItsVersionAndItsExitCodes) {
    const Program_Run version = bench("--version");
    EXPECT_EQ(version.exit_code, 0);
    EXPECT_EQ(version.output, "orbe-bench " ORBE_PROGRAM_VERSION "\n");
    const Program_Run help = bench("--help");
    EXPECT_EQ(help.exit_code, 0);
    EXPECT_NE(help.output.find("Exit codes: 0 "), std::string::npos) << help.output;
    EXPECT_NE(help.output.find("--benchmark_filter"), std::string::npos) << help.output;
}

TEST_F(BenchProgram, WrongArgumentsAnswerTwo) {
    for (const std::string arguments : {"--frobnicate", "--benchmark_frobnicate", "--asked 0", "--asked -1",
                                        "--seconds nan", "--seconds inf", "--seconds -1"}) {
        EXPECT_EQ(bench(arguments).exit_code, 2) << arguments;
    }
}

} // namespace
