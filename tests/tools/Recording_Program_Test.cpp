// Runs orbe-recording as a user does, in the test's working directory.
#include "Program_Run.h"

#include "Waiter_Guard.h"
#include "controller/C_ORBE_Controller_Library.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using Pelgar::ORBE::test::Program_Run;
using Pelgar::ORBE::test::run_program;

Program_Run recording(const std::string& arguments) {
    return run_program(ORBE_RECORDING_PROGRAM " " + arguments);
}

// How many files there are besides what the run itself left.
std::ptrdiff_t other_files() {
    const std::filesystem::directory_iterator files(".");
    return std::count_if(begin(files), end(files), [](const auto& entry) {
        return entry.path().filename() != "run-output.txt" && entry.path().filename() != "run-errors.txt";
    });
}

TEST(RecordingProgram, MakesARecordingThatIsClean) {
    const Program_Run made = recording("make good.bin --seconds 0.01 --signal tone --signal ramp:0-3");
    EXPECT_EQ(made.exit_code, 0);
    EXPECT_EQ(made.errors, "");
    EXPECT_TRUE(made.output.starts_with("good.bin: 1261712 bytes written in "));
    EXPECT_EQ(std::filesystem::file_size("good.bin"), 1261712U);
    EXPECT_EQ(other_files(), 1);

    const Program_Run checked = recording("check good.bin");
    EXPECT_EQ(checked.exit_code, 0);
    EXPECT_EQ(checked.errors, "");
    EXPECT_TRUE(checked.output.starts_with("good.bin: 1261712 bytes, 78857 rows\n"));
    EXPECT_TRUE(checked.output.ends_with("Nothing is wrong with this recording.\n"));
}

TEST(RecordingProgram, MakesWholeBlocks) {
    EXPECT_EQ(recording("make blocks.bin --blocks 1 --ports 4,2 --no-rhd").exit_code, 0);
    EXPECT_EQ(std::filesystem::file_size("blocks.bin"), 4U << 20);
}

TEST(RecordingProgram, CheckAnswersOneWhenSomethingIsWrong) {
    ASSERT_EQ(recording("make bad.bin --seconds 0.01 --fault lost-row:1@100 --extra-bytes 3").exit_code, 0);
    const Program_Run checked = recording("check bad.bin");
    EXPECT_EQ(checked.exit_code, 1);
    EXPECT_TRUE(checked.output.ends_with("Something is wrong with this recording:\n"
                                         "  3 bytes after the last whole row\n"
                                         "  port 1: see the table\n"));
    const Program_Run json = recording("check --json bad.bin");
    EXPECT_EQ(json.exit_code, 1);
    EXPECT_TRUE(json.output.starts_with("{\n  \"file\": \"bad.bin\",\n  \"clean\": false,\n"));
}

TEST(RecordingProgram, CheckAnswersTwoWhenTheFileCannotBeRead) {
    std::ofstream("empty.bin").close();
    const std::pair<std::string, std::string> cases[] = {
        {"missing.bin", "orbe-recording: cannot read 'missing.bin': No such file or directory\n"},
        {".", "orbe-recording: cannot read '.': Is a directory\n"},
        {"empty.bin", "orbe-recording: 'empty.bin' is empty\n"},
    };
    for (const auto& [path, message] : cases) {
        const Program_Run run = recording("check " + path);
        EXPECT_EQ(run.exit_code, 2);
        EXPECT_EQ(run.errors, message);
        EXPECT_EQ(run.output, "");
    }
}

TEST(RecordingProgram, MakeSaysInOneLineWhyItCannotWrite) {
    std::filesystem::create_directory("directory");
    const std::pair<std::string, std::string> cases[] = {
        {"no/out.bin", "orbe-recording: cannot write 'no/out.bin': No such file or directory\n"},
        {"directory", "orbe-recording: cannot write 'directory': Is a directory\n"},
        {"/dev/full", "orbe-recording: cannot write '/dev/full': it is not a regular file\n"},
    };
    for (const auto& [path, message] : cases) {
        const Program_Run run = recording("make --seconds 0.01 " + path);
        EXPECT_EQ(run.exit_code, 1);
        EXPECT_EQ(run.errors, message);
        EXPECT_EQ(run.output, "");
    }
}

TEST(RecordingProgram, ARecordingThatDoesNotFitLeavesNothingBehind) {
    // A limit of the file size stands for the full disk: the write fails half-way.
    const Program_Run run = run_program("(trap '' XFSZ; ulimit -f 2000; exec " ORBE_RECORDING_PROGRAM
                                        " make large.bin --seconds 1)");
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.errors, "orbe-recording: cannot write 'large.bin': File too large\n");
    EXPECT_EQ(other_files(), 0);
}

TEST(RecordingProgram, AStoppedRunLeavesNothingBehind) {
    const Program_Run run = run_program("timeout --preserve-status -s INT 1 " ORBE_RECORDING_PROGRAM
                                        " make endless.bin --seconds 100000 --ports 1 --signal spikes");
    EXPECT_EQ(run.exit_code, 130);
    EXPECT_EQ(other_files(), 0);
}

TEST(RecordingProgram, WrongArgumentsAnswerTwo) {
    const std::pair<std::string, std::string> cases[] = {
        {"make x.bin --signal hum",
         "orbe-recording: unknown signal 'hum' (noise, tone, ramp, spikes or pattern)\n"},
        {"make x.bin --fault lost-row",
         "orbe-recording: fault 'lost-row' says neither where (@POSITION) nor how often (~RATE)\n"},
    };
    for (const auto& [arguments, message] : cases) {
        const Program_Run run = recording(arguments);
        EXPECT_EQ(run.exit_code, 2);
        EXPECT_EQ(run.errors, message);
    }
    for (const std::string arguments :
         {"", "make", "check", "frobnicate", "make x.bin --ports 5", "make x.bin --rhd-streams 33",
          "make x.bin --seconds -1", "make x.bin --seconds 1 --blocks 1",
          "make x.bin --tone-hz 1 --tone-bin 1"}) {
        const Program_Run run = recording(arguments);
        EXPECT_EQ(run.exit_code, 2) << arguments;
        EXPECT_NE(run.errors, "") << arguments;
    }
    EXPECT_EQ(other_files(), 0);
}

TEST(RecordingProgram, HelpSaysWhatNeverReachesAHost) {
    for (const std::string command : {"make", "check"}) {
        const Program_Run run = recording(command + " --help");
        EXPECT_EQ(run.exit_code, 0);
        EXPECT_NE(run.output.find("1 MiB"), std::string::npos);
        EXPECT_NE(run.output.find("1,792 super frames"), std::string::npos);
    }
}

TEST(RecordingProgram, CalibrationWritesAPairOfFiles) {
    const Program_Run run = run_program(ORBE_RECORDING_PROGRAM " calibration . --seed 4 --serial 123 --crlf");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(run.output, "./123_ADCCalibration.csv\n./123_gainCalValues.csv\n");
    for (const char* path : {"123_ADCCalibration.csv", "123_gainCalValues.csv"}) {
        std::ifstream file(path, std::ios::binary);
        std::string line;
        std::getline(file, line);
        EXPECT_EQ(line, "123\r") << path;
    }
}

TEST(RecordingProgram, CalibrationIntoAFolderThatIsNotThereIsRefused) {
    const Program_Run run = run_program(ORBE_RECORDING_PROGRAM " calibration nowhere/at/all");
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_TRUE(run.errors.starts_with("orbe-recording: ")) << run.errors;
    EXPECT_EQ(run.output, "");
}

// The commands of docs/self-tests.md.
TEST(RecordingProgram, MakesTheRecordingsOfTheSelfTests) {
    EXPECT_EQ(recording("make muxed_raw_data_psb_test.bin --blocks 1 --signal pattern").exit_code, 0);
    EXPECT_EQ(recording("make muxed_np_raw_data_2_minute.bin --blocks 5 --no-rhd --signal tone --tone-bin 40")
                  .exit_code,
              0);
    const Pelgar::ORBE::test::Waiter_Guard waiter;
    for (unsigned port = 0; port < 4; ++port) {
        Pelgar::ORBE::ORBE_Controller_Library pattern(true);
        Pelgar::ORBE::ORBE_Controller_Library tone(true);
        for (auto* const controller : {&pattern, &tone}) {
            ASSERT_TRUE(controller->open());
            ASSERT_TRUE(controller->pre_init(true));
            controller->set_self_test_directory(".");
        }
        EXPECT_TRUE(pattern.bist_PSB(port)) << port;
        EXPECT_TRUE(tone.bist_Signal(port)) << port;
    }
}

} // namespace
