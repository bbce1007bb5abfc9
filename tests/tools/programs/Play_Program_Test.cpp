// Runs orbe-play as a user does, in the test's working directory. The recordings are so short that the
// packets fit the library's output queues whatever else the machine has to do.
#include "Program_Run.h"
#include "Terminal_Run.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

using namespace Pelgar::ORBE::test;

void make(const std::string& arguments) {
    ASSERT_EQ(run_program(ORBE_RECORDING_PROGRAM " make " + arguments).exit_code, 0);
}

// Keeps the working directories of the program inside the test's.
Program_Run play(const std::string& arguments) {
    return run_program("TMPDIR=$PWD " ORBE_PLAY_PROGRAM " " + arguments);
}

bool working_directory_left() {
    const std::filesystem::directory_iterator files(".");
    return std::any_of(begin(files), end(files), [](const auto& entry) {
        return entry.path().filename().string().starts_with("orbe-play-");
    });
}

std::string line_of(const Program_Run& run, const std::string& stream) {
    const std::size_t start = run.output.find(stream);
    return start == std::string::npos ? "" : run.output.substr(start, run.output.find('\n', start) - start);
}

TEST(PlayProgram, EveryPacketOfEveryPortArrivesAndIsEqual) {
    make("good.bin --blocks 3 --no-rhd");
    const Program_Run run = play("good.bin --verify");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    for (const std::string port : {"port 1", "port 2", "port 3", "port 4"}) {
        EXPECT_EQ(line_of(run, port),
                  port + "        448       448    448        5376          448    0.179");
    }
    EXPECT_TRUE(run.output.ends_with("All packets arrived and are equal.\n"));
    EXPECT_FALSE(working_directory_left());
}

TEST(PlayProgram, EveryPortIsBroughtUpBeforeItStreams) {
    make("good.bin --blocks 1 --no-rhd --ports 2");
    const Program_Run run = play("good.bin --keep");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    std::string identities;
    for (const std::string port : {"1", "2", "3", "4"}) {
        identities +=
            "Probe " + port + " is up: headstage NP2_HS_30, probe PRB_1_4_0480_1, serial number 0\n";
    }
    EXPECT_TRUE(run.output.starts_with(identities)) << run.output;
}

TEST(PlayProgram, EveryADCPacketArrivesAndIsEqual) {
    make("adc.bin --seconds 0.0168");
    const Program_Run run = play("adc.bin --verify");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(line_of(run, "RHD ADC"),
              "RHD ADC       497       497    497           -            -    0.017");
    EXPECT_NE(run.output.find(
                  "port 1: 32760 rows, but no packet: they make no whole block of 1,792 super frames that "
                  "one more row follows\n"),
              std::string::npos)
        << run.output;
}

TEST(PlayProgram, DamagedRecordingsArriveAsTheyMust) {
    make("bad.bin --blocks 2 --no-rhd --fault lost-row~1e-5 --fault wrong-tag~1e-3 --fault unknown-row~1e-5 "
         "--fault bad-marker@700000 --fault missing-flag~1e-3");
    const Program_Run run = play("bad.bin --verify");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_TRUE(run.output.ends_with("All packets arrived and are equal.\n"));
    EXPECT_NE(run.output.find("\nThe recording itself is damaged:\n"
                              "  1 piece of 1 MiB holds a row without the marker, row 699998 ("),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("\n  port 4: "), std::string::npos) << run.output;
}

TEST(PlayProgram, AGoodRecordingIsNotCalledDamaged) {
    make("good.bin --blocks 1 --no-rhd --ports 1");
    const Program_Run run = play("good.bin");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(run.output.find("damaged"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("no packet"), std::string::npos) << run.output;
}

TEST(PlayProgram, WithoutVerifyingNothingIsCompared) {
    make("good.bin --blocks 1 --no-rhd --ports 3");
    const Program_Run run = play("good.bin");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(line_of(run, "port 3"), "port 3        149       149      -        1788          149    0.060");
    EXPECT_TRUE(run.output.ends_with("All packets arrived.\n"));
}

TEST(PlayProgram, ARecordingThatCannotBeReadHasItsReason) {
    const std::string here = std::filesystem::canonical(".").string();
    for (const std::string option : {"", " --verify", " --paced"}) {
        const Program_Run missing = play("missing.bin" + option);
        EXPECT_EQ(missing.exit_code, 1);
        EXPECT_EQ(missing.errors,
                  "orbe-play: cannot read '" + here + "/missing.bin': No such file or directory\n");
        EXPECT_EQ(missing.output, "");
        const Program_Run directory = play("." + option);
        EXPECT_EQ(directory.exit_code, 1);
        EXPECT_TRUE(directory.errors.ends_with("': Is a directory\n")) << directory.errors;
    }
    EXPECT_FALSE(working_directory_left());
}

TEST(PlayProgram, NoPacketsAtAllAreAFailure) {
    std::ofstream("garbage.bin") << std::string(3'000'000, 'x');
    std::ofstream("empty.bin").close();
    make("short.bin --seconds 0.001");
    const std::string none =
        "orbe-play: the file is not a recording of this box ('orbe-recording check' tells "
        "more)\n";
    const std::string nothing =
        "orbe-play: the recording holds nothing that reaches a host ('orbe-recording check' "
        "tells more)\n";
    const std::pair<std::string, std::string> cases[] = {
        {"garbage.bin", none}, {"empty.bin", none}, {"short.bin", nothing}};
    for (const auto& [recording, message] : cases) {
        for (const std::string option : {"", " --verify", " --paced"}) {
            const Program_Run run = play(recording + option);
            EXPECT_EQ(run.exit_code, 1);
            EXPECT_TRUE(run.errors.starts_with(message)) << run.errors;
        }
    }
}

TEST(PlayProgram, KeepsItsWorkingDirectoryOnRequest) {
    make("good.bin --blocks 1 --no-rhd --ports 1");
    const Program_Run run = play("good.bin --keep");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_TRUE(working_directory_left());
}

TEST(PlayProgram, TheLibrarysOutputIsShownOnRequest) {
    make("good.bin --blocks 1 --no-rhd --ports 1");
    const Program_Run run = play("good.bin --no-quiet-library");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_NE(run.output.find("Simulation worker thread started\n"), std::string::npos);
}

TEST(PlayProgram, PacedPlayingLosesNothingOfALongRecording) {
    // Seventeen times as many ADC packets as the library's queue holds.
    make("long.bin --blocks 5");
    const Program_Run run = play("long.bin --verify --paced");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(line_of(run, "port 4"), "port 4        746       746    746        8952          746    0.298");
    EXPECT_TRUE(run.output.ends_with("All packets arrived and are equal.\n"));
    EXPECT_FALSE(working_directory_left());
}

TEST(PlayProgram, AStopByTheUserEndsIt) {
    make("long.bin --blocks 60 --ports 1 --no-rhd");
    const Program_Run run =
        run_program("TMPDIR=$PWD timeout --preserve-status -s INT 1 " ORBE_PLAY_PROGRAM " long.bin --paced");
    EXPECT_EQ(run.exit_code, 130);
    EXPECT_TRUE(run.errors.starts_with("orbe-play: stopped by the user\n")) << run.errors;
}

TEST(PlayProgram, AClosedTerminalEndsIt) {
    make("long.bin --blocks 60 --ports 1 --no-rhd");
    const Program_Run run =
        run_program("TMPDIR=$PWD timeout --preserve-status -s HUP 1 " ORBE_PLAY_PROGRAM " long.bin --paced");
    EXPECT_EQ(run.exit_code, 130);
}

TEST(PlayProgram, OutputThatIsLostIsAFailure) {
    make("good.bin --blocks 1 --no-rhd --ports 1");
    for (const std::string arguments : {"good.bin", "--help", "--version"}) {
        const Program_Run run =
            run_program("(TMPDIR=$PWD " ORBE_PLAY_PROGRAM " " + arguments + " >/dev/full)");
        EXPECT_EQ(run.exit_code, 1) << arguments;
        EXPECT_TRUE(run.errors.starts_with("orbe-play: standard output cannot be written")) << run.errors;
    }
    EXPECT_FALSE(working_directory_left());
}

TEST(PlayProgram, NoLineIsBrokenByTheTerminal) {
    make("bad.bin --blocks 1 --no-rhd --ports 1 --fault wrong-tag@3+9");
    Terminal terminal;
    for (const unsigned columns : {80U, 50U}) {
        terminal.columns = columns;
        for (const std::string arguments : {"bad.bin", "--help"}) {
            const Terminal_Run run =
                run_on_terminal("env TMPDIR=$PWD " ORBE_PLAY_PROGRAM " " + arguments, terminal);
            EXPECT_EQ(run.exit_code, 0) << run.screen;
            EXPECT_LE(longest_line(run.screen), columns) << run.screen;
        }
    }
}

TEST(PlayProgram, TellsItsVersionAndItsExitCodes) {
    const Program_Run version = play("--version");
    EXPECT_EQ(version.exit_code, 0);
    EXPECT_EQ(version.output, "orbe-play " ORBE_PROGRAM_VERSION "\n");
    EXPECT_NE(play("--help").output.find("Exit codes: 0 "), std::string::npos);
}

TEST(PlayProgram, WrongArgumentsAnswerTwo) {
    for (const std::string stall : {"nan", "inf", "-1", "1e999", "''"}) {
        EXPECT_EQ(play("x.bin --stall=" + stall).exit_code, 2) << stall;
    }
    EXPECT_EQ(play("").exit_code, 2);
    EXPECT_EQ(play("x.bin --stall 0").exit_code, 2);
    EXPECT_EQ(play("x.bin --loud").exit_code, 2);
}

} // namespace
