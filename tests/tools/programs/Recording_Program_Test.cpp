// Runs orbe-recording as a user does, in the test's working directory.
#include "Program_Run.h"
#include "Terminal_Run.h"

#include "Waiter_Guard.h"
#include "controller/C_ORBE_Controller_Library.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>

namespace {

using namespace Pelgar::ORBE::test;

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
    EXPECT_TRUE(checked.output.ends_with(
        "Something is wrong with this recording:\n"
        "  3 bytes after the last whole row, row 78856 (0.010 s)\n"
        "  port 1: 1 gap in the row counter, row 405 (0.000 s)\n"
        "  port 1: 1 super frame breaks off, row 405 (0.000 s)\n"
        "  port 1: 29 rows belong to no super frame, rows 405 (0.000 s), 409 (0.000 s), "
        "413 (0.000 s), ...\n"
        "  port 1: 1 gap in the frame counter, row 540 (0.000 s)\n"))
        << checked.output;
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

TEST(RecordingProgram, CheckKnowsWhatIsNoRecording) {
    std::ofstream("text.txt") << std::string(3'000, 'x');
    for (const std::string arguments : {"check text.txt", "check --json text.txt"}) {
        const Program_Run run = recording(arguments);
        EXPECT_EQ(run.exit_code, 2);
        EXPECT_EQ(run.errors,
                  "orbe-recording: 'text.txt' is not a recording of this box: of its 187 rows of 16 bytes "
                  "0 have the marker and a known stream id\n");
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

// SIGHUP comes when the terminal is closed over a connection that breaks.
TEST(RecordingProgram, HoweverItIsStoppedItLeavesNothingBehind) {
    for (const std::string signal : {"TERM", "HUP"}) {
        const Program_Run run = run_program("timeout --preserve-status -s " + signal +
                                            " 1 " ORBE_RECORDING_PROGRAM
                                            " make endless.bin --seconds 100000 --ports 1 --signal spikes");
        EXPECT_EQ(run.exit_code, 130) << signal;
        EXPECT_EQ(other_files(), 0) << signal;
    }
}

TEST(RecordingProgram, AClosedTerminalLeavesNoHalfFile) {
    Terminal terminal;
    terminal.close_when = [] { return other_files() != 0; };
    const Terminal_Run run = run_on_terminal(
        ORBE_RECORDING_PROGRAM " make endless.bin --seconds 100000 --ports 1 --signal spikes", terminal);
    EXPECT_EQ(run.exit_code, 130);
    EXPECT_EQ(other_files(), 0);
}

TEST(RecordingProgram, WhatIsToOutliveTheTerminalDoes) {
    // As nohup starts it.
    const Program_Run run =
        run_program("(trap '' HUP; " ORBE_RECORDING_PROGRAM " make good.bin --seconds 5 & "
                    "sleep 0.2; kill -HUP $!; wait $!)");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_TRUE(std::filesystem::exists("good.bin"));
}

TEST(RecordingProgram, OverwritesNothingUnlessItIsTold) {
    std::ofstream("good.bin") << "precious";
    const Program_Run refused = recording("make good.bin --seconds 0.001 </dev/null");
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_EQ(refused.errors, "orbe-recording: 'good.bin' is there already (--force overwrites it)\n");
    EXPECT_EQ(std::filesystem::file_size("good.bin"), 8U);
    EXPECT_EQ(recording("make good.bin --seconds 0.001 --force </dev/null").exit_code, 0);
    EXPECT_EQ(std::filesystem::file_size("good.bin"), 126160U);
}

TEST(RecordingProgram, OverwritesNoCalibrationUnlessItIsTold) {
    std::ofstream("123_gainCalValues.csv") << "precious";
    const Program_Run refused = recording("calibration . --serial 123 </dev/null");
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_EQ(refused.errors,
              "orbe-recording: './123_gainCalValues.csv' is there already (--force overwrites it)\n");
    EXPECT_EQ(other_files(), 1) << "neither of the two was written";
    EXPECT_EQ(recording("calibration . --serial 123 --force </dev/null").exit_code, 0);
    EXPECT_EQ(other_files(), 2);
}

TEST(RecordingProgram, AsksOnATerminalBeforeItOverwrites) {
    std::ofstream("good.bin") << "precious";
    const std::string command = ORBE_RECORDING_PROGRAM " make good.bin --seconds 0.001";
    Terminal terminal;
    terminal.input = "no\n";
    const Terminal_Run refused = run_on_terminal(command, terminal);
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_NE(refused.screen.find("Overwrite 'good.bin'? [yes/no] "), std::string::npos) << refused.screen;
    EXPECT_NE(refused.screen.find("Nothing was written."), std::string::npos) << refused.screen;
    EXPECT_EQ(std::filesystem::file_size("good.bin"), 8U);
    terminal.input = "yes\n";
    EXPECT_EQ(run_on_terminal(command, terminal).exit_code, 0);
    EXPECT_EQ(std::filesystem::file_size("good.bin"), 126160U);
}

// In a test that takes as long as the machine needs to show something.
Terminal_Run stopped_when_something_shows(Terminal terminal) {
    std::string command = "timeout --foreground --preserve-status -s INT 2 " ORBE_RECORDING_PROGRAM
                          " make endless-and-with-a-name-that-does-not-fit.bin --seconds 100000 --ports 1";
    return run_on_terminal(command, terminal);
}

TEST(RecordingProgram, ProgressFitsTheTerminal) {
    Terminal terminal;
    for (const unsigned columns : {120U, 80U, 40U, 20U, 8U}) {
        terminal.columns = columns;
        const Terminal_Run run = stopped_when_something_shows(terminal);
        EXPECT_NE(run.screen.find("\r\x1B[K"), std::string::npos) << run.screen;
        EXPECT_NE(run.screen.find(" 0 %"), std::string::npos) << run.screen;
        EXPECT_LT(longest_line(run.screen), columns) << run.screen;
    }
}

TEST(RecordingProgram, ATerminalWithoutControlSequencesGetsNone) {
    Terminal terminal;
    for (const char* const name : {"dumb", ""}) {
        terminal.name = name;
        EXPECT_EQ(stopped_when_something_shows(terminal).screen.find('\x1B'), std::string::npos) << name;
    }
}

TEST(RecordingProgram, NoLineOfTheReportOrTheHelpIsBrokenByTheTerminal) {
    ASSERT_EQ(recording("make bad.bin --seconds 0.01 --fault lost-row~1e-3").exit_code, 0);
    Terminal terminal;
    for (const unsigned columns : {80U, 50U}) {
        terminal.columns = columns;
        for (const std::string arguments : {"check bad.bin", "--help", "make --help", "check --help"}) {
            const Terminal_Run run = run_on_terminal(ORBE_RECORDING_PROGRAM " " + arguments, terminal);
            EXPECT_LE(longest_line(run.screen), columns) << run.screen;
            EXPECT_GT(longest_line(run.screen), columns / 2) << run.screen;
        }
    }
}

TEST(RecordingProgram, OutputThatIsLostIsAFailure) {
    ASSERT_EQ(recording("make good.bin --seconds 0.01").exit_code, 0);
    for (const std::string arguments : {"check good.bin", "check --json good.bin",
                                        "make other.bin --seconds 0.01", "--version", "make --help"}) {
        const Program_Run run = run_program("(" ORBE_RECORDING_PROGRAM " " + arguments + " >/dev/full)");
        EXPECT_EQ(run.exit_code, 1) << arguments;
        EXPECT_TRUE(run.errors.starts_with("orbe-recording: standard output cannot be written"))
            << run.errors;
    }
    // The recording itself is whole.
    EXPECT_EQ(recording("check other.bin").exit_code, 0);
    const Program_Run closed = run_program("(" ORBE_RECORDING_PROGRAM " check good.bin >&-)");
    EXPECT_EQ(closed.exit_code, 1);
    EXPECT_EQ(closed.errors, "orbe-recording: standard output cannot be written: Bad file descriptor\n");
}

TEST(RecordingProgram, APipeThatNobodyReadsIsAFailure) {
    ASSERT_EQ(recording("make good.bin --seconds 0.01").exit_code, 0);
    // The reader has gone for certain when the program begins.
    const Program_Run run =
        run_program("({ sleep 0.2; " ORBE_RECORDING_PROGRAM " check good.bin; echo $? >&2; } | true)");
    EXPECT_EQ(run.errors, "orbe-recording: standard output cannot be written: Broken pipe\n1\n");
}

TEST(RecordingProgram, AClosedStandardOutputDoesNotEndUpInTheRecording) {
    EXPECT_EQ(run_program("(" ORBE_RECORDING_PROGRAM " make good.bin --seconds 0.01 >&- 2>&-)").exit_code, 1);
    EXPECT_EQ(recording("check good.bin").exit_code, 0);
    EXPECT_EQ(std::filesystem::file_size("good.bin"), 1261712U);
}

TEST(RecordingProgram, NumbersThatAreNoneAreRefused) {
    for (const std::string option : {"--seconds", "--tone-hz", "--tone-bin", "--blocks", "--ports",
                                     "--rhd-streams", "--seed", "--extra-bytes"}) {
        for (const std::string number : {"nan", "-nan", "inf", "1e999", "-1", "18446744073709551616",
                                         "99999999999999999999", "''", "one"}) {
            const Program_Run run = recording("make x.bin " + option + "=" + number + " --no-rhd");
            EXPECT_EQ(run.exit_code, 2) << option << " " << number;
            EXPECT_NE(run.errors, "") << option << " " << number;
        }
    }
    for (const std::string option : {"--seed", "--serial"}) {
        EXPECT_EQ(recording("calibration . " + option + "=-1").exit_code, 2) << option;
        EXPECT_EQ(recording("calibration . " + option + "=18446744073709551616").exit_code, 2) << option;
    }
    EXPECT_EQ(other_files(), 0);
    EXPECT_EQ(recording("make x.bin --seconds=nan").errors,
              "--seconds: 'nan' is not a number from 3.33333e-05 to 1e+06\nRun with --help for more "
              "information.\n");
    EXPECT_EQ(recording("make x.bin --seed=-1").errors,
              "--seed: '-1' is not a whole number from 0 to 18446744073709551615\n"
              "Run with --help for more information.\n");
}

TEST(RecordingProgram, TellsItsVersion) {
    const Program_Run run = recording("--version");
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.output, "orbe-recording " ORBE_PROGRAM_VERSION "\n");
}

TEST(RecordingProgram, EveryHelpTellsTheExitCodes) {
    for (const std::string command : {"", "make ", "check ", "calibration "}) {
        const Program_Run run = recording(command + "--help");
        EXPECT_EQ(run.exit_code, 0);
        EXPECT_NE(run.output.find("Exit codes: 0 "), std::string::npos) << run.output;
    }
}

TEST(RecordingProgram, WrongArgumentsAnswerTwo) {
    const std::pair<std::string, std::string> cases[] = {
        {"make x.bin --signal hum",
         "orbe-recording: unknown signal 'hum' (noise, tone, ramp, spikes or pattern)\n"},
        {"make x.bin --fault lost-row",
         "orbe-recording: fault 'lost-row' says neither where (@POSITION) nor how often (~RATE)\n"},
        {"make x.bin --fault lost-row~1",
         "orbe-recording: these faults leave nothing that reaches a host: 'lost-row~1'\n"},
        {"make x.bin --seconds 0.001 --fault lost-row:1@1950",
         "orbe-recording: fault 'lost-row:1@1950' lies beyond the end: there are 1950 rows, counted from "
         "0\n"},
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
        const std::string text = std::regex_replace(run.output, std::regex("\\s+"), " ");
        EXPECT_NE(text.find("1 MiB"), std::string::npos);
        EXPECT_TRUE(text.find("blocks of 1,792") != std::string::npos ||
                    text.find("block of 1,792 super frames") != std::string::npos);
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
    const Waiter_Guard waiter;
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
