// Runs orbe-record as a user does, in the test's working directory, on recordings that are played in real
// time.
#include "Program_Run.h"
#include "Recorded_Folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace Pelgar::ORBE::test;

void make(const std::string& arguments) {
    ASSERT_EQ(run_program(ORBE_RECORDING_PROGRAM " make " + arguments).exit_code, 0);
}

// Keeps the working directories of the program inside the test's.
const std::string record_program = "TMPDIR=$PWD " ORBE_RECORD_PROGRAM " ";

Program_Run record(const std::string& arguments) {
    return run_program(record_program + arguments);
}

// Whether a line of the program's own begins so; on a slow computer others tell how the recording comes
// along.
bool tells(const Program_Run& run, const std::string& beginning) {
    return ("\n" + run.errors).find("\norbe-record: " + beginning) != std::string::npos;
}

bool working_directory_left() {
    const fs::directory_iterator files(".");
    return std::any_of(begin(files), end(files), [](const auto& entry) {
        return entry.path().filename().string().starts_with("orbe-record-");
    });
}

std::string content_of(const fs::path& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

// What a raw recording holds, read once.
struct Made {
    Made(const std::string& recording, const std::vector<unsigned>& with_ports) : ports(with_ports) {
        for (const unsigned port : ports) {
            bands.push_back({made_probe(recording, port, false), made_probe(recording, port, true)});
        }
        inputs = made_inputs(recording);
    }

    std::vector<unsigned> ports;
    std::vector<std::array<Recorded_Samples, 2>> bands; // AP and LFP
    Recorded_Samples inputs;
};

// The sample that the folder's files begin with: 0, unless the computer was too busy at the start.
std::size_t first_sample(const std::string& folder) {
    const std::string description = content_of(fs::path(folder) / "orbe_recording.json");
    const std::string name = "\"first_sample\": ";
    const std::size_t at = description.find(name);
    return at == std::string::npos ? 0 : std::stoul(description.substr(at + name.size()));
}

// All streams of a folder.
void expect_recorded(const std::string& folder, const Made& made, std::size_t least_samples,
                     std::size_t least_lfp_samples) {
    const std::size_t first = first_sample(folder);
    for (unsigned probe = 0; probe < made.ports.size(); ++probe) {
        for (const bool is_lfp : {false, true}) {
            EXPECT_EQ(difference(recorded_probe(folder, probe, is_lfp), made.bands[probe][is_lfp ? 1 : 0],
                                 is_lfp ? first / 12 : first, is_lfp ? least_lfp_samples : least_samples),
                      "")
                << folder << ", port " << made.ports[probe] << (is_lfp ? ", LFP" : ", AP");
        }
    }
    EXPECT_EQ(difference(recorded_inputs(folder), made.inputs, first, least_samples), "") << folder;
}

void expect_recorded(const std::string& folder, const Made& made, std::size_t least_samples) {
    expect_recorded(folder, made, least_samples, least_samples / 12);
}

TEST(RecordProgram, EverySampleOfFourProbesAndTheInputsIsInTheFolder) {
    make("made.bin --seconds 0.8 --signal spikes --signal ramp:0-95");
    const Made made("made.bin", {1, 2, 3, 4});
    for (const std::string format : {"spikeglx", "open-ephys"}) {
        const Program_Run run = record(format + " --simulation made.bin --seconds 0.5 --format " + format);
        EXPECT_EQ(run.exit_code, 0) << run.errors;
        EXPECT_FALSE(tells(run, "")) << run.errors;
        for (const std::string stream : {"probe 1", "probe 2", "probe 3", "probe 4", "ADC"}) {
            EXPECT_NE(run.output.find(stream + ": 0.500 s, 0 samples lost\n"), std::string::npos)
                << run.output;
        }
        expect_recorded(format, made, 15'000);
        EXPECT_EQ(recorded_probe(format, 0, false).rows(), 15'000U);
        EXPECT_EQ(recorded_probe(format, 3, true).rows(), 1250U);
        EXPECT_EQ(recorded_inputs(format).rows(), 15'000U);
        EXPECT_EQ(content_of(fs::path(format) / "gaps.csv"), "stream,sample,length\n");
        EXPECT_TRUE(fs::exists(fs::path(format) / "orbe_recording.json"));
    }
    EXPECT_FALSE(working_directory_left());
}

TEST(RecordProgram, EndOfTheRecordingEndsTheRecorder) {
    make("made.bin --seconds 0.5 --ports 2,3");
    const Program_Run run = record("./folder/ --simulation made.bin --seconds 5");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_TRUE(run.output.ends_with("The recording that was played ended before the time was over.\n"));
    expect_recorded("folder", Made("made.bin", {2, 3}), 14'000);
    EXPECT_TRUE(fs::exists("folder/folder_g0"));
}

TEST(RecordProgram, RecordingWithoutInputsIsRecordedWithoutThem) {
    make("made.bin --seconds 0.5 --ports 1 --no-rhd");
    const Program_Run run = record("folder --simulation made.bin");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(run.output.find("ADC"), std::string::npos);
    EXPECT_EQ(recorded_inputs("folder").rows(), 0U);
    EXPECT_EQ(difference(recorded_probe("folder", 0, false), made_probe("made.bin", 1, false),
                         first_sample("folder"), 14'000),
              "");
}

TEST(RecordProgram, RawRecordingPlayedAndRecordedAgainIsTheSame) {
    make("made.bin --seconds 0.3 --signal spikes");
    const Program_Run raw = record("raw --format raw --simulation made.bin");
    EXPECT_EQ(raw.exit_code, 0) << raw.errors;
    EXPECT_TRUE(content_of("raw/raw_data.bin") == content_of("made.bin"));
    EXPECT_NE(content_of("raw/orbe_recording.json").find("\"raw\""), std::string::npos);
    EXPECT_EQ(record("again --simulation raw/raw_data.bin").exit_code, 0);
    expect_recorded("again", Made("made.bin", {1, 2, 3, 4}), 8000);
}

// Records in the background, does `action` when the folder holds 2.5 MB and `delay` (in seconds) has passed,
// and answers how the program ended, whose process is `$recorder`.
Program_Run record_until(const std::string& folder, const std::string& arguments, const std::string& delay,
                         const std::string& action) {
    // A shell lets what it runs in the background ignore Ctrl-C.
    return run_program("( env --default-signal=INT TMPDIR=$PWD " ORBE_RECORD_PROGRAM " " + folder + " " +
                       arguments + " & recorder=$!; until [ \"$(du -ks " + folder +
                       " 2>/dev/null | cut -f 1)\" -gt 2500 ] 2>/dev/null; do sleep 0.02; done; sleep " +
                       delay + "; " + action + "; wait $recorder )");
}

TEST(RecordProgram, CtrlCAndTerminationEndTheRecordingWell) {
    make("made.bin --seconds 3 --ports 1");
    const Made made("made.bin", {1});
    for (const std::string signal : {"INT", "TERM"}) {
        const Program_Run run =
            record_until(signal, "--simulation made.bin", "0.1", "kill -" + signal + " $recorder");
        EXPECT_EQ(run.exit_code, 0) << run.errors;
        expect_recorded(signal, made, 3000);
        EXPECT_LT(recorded_probe(signal, 0, false).rows(), 80'000U);
    }
    EXPECT_FALSE(working_directory_left());
}

TEST(RecordProgram, LostSamplesAreToldAndAnswerAnotherExitCode) {
    make("made.bin --seconds 0.5 --ports 1 --fault lost-row:1@65000+650");
    const Program_Run run = record("folder --simulation made.bin");
    EXPECT_EQ(run.exit_code, 3);
    EXPECT_NE(run.output.find(" s, 10 samples lost\n"), std::string::npos) << run.output;
    EXPECT_TRUE(tells(run, "something is missing in the recording")) << run.errors;
    EXPECT_NE(
        content_of("folder/gaps.csv").find("," + std::to_string(1000 - first_sample("folder")) + ",10\n"),
        std::string::npos)
        << content_of("folder/gaps.csv");
}

TEST(RecordProgram, NothingIsOverwritten) {
    make("made.bin --seconds 0.1 --ports 1");
    fs::create_directory("folder");
    std::ofstream("folder/notes.txt") << "a day's work";
    const std::string here = fs::canonical(".").string();
    const Program_Run run = record("folder --simulation made.bin");
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.errors,
              "orbe-record: '" + here + "/folder' is there already, and nothing is overwritten\n");
    EXPECT_EQ(content_of("folder/notes.txt"), "a day's work");
}

TEST(RecordProgram, MistakesInTheArgumentsAreToldAndNothingIsMade) {
    for (const std::string arguments :
         {"", "folder --format wav", "folder --ap-gain 499", "folder --reference ground", "folder --bank 3",
          "folder --seconds 0", "folder --seconds nan", "folder --electrodes missing.csv",
          "folder --electrodes map.csv --bank 1", "folder --calibration missing", "folder --ap-filter maybe",
          "repair"}) {
        const Program_Run run = record(arguments);
        EXPECT_EQ(run.exit_code, 2) << arguments;
        EXPECT_NE(run.errors, "") << arguments;
    }
    EXPECT_FALSE(fs::exists("folder"));
}

TEST(RecordProgram, WithoutABoxOrARecordingNothingIsMade) {
    EXPECT_EQ(record("folder --simulation missing.bin").exit_code, 1);
    std::ofstream("garbage.bin") << std::string(3'000'000, 'x');
    const Program_Run garbage = record("folder --simulation garbage.bin");
    EXPECT_EQ(garbage.exit_code, 1);
    EXPECT_TRUE(tells(garbage, "there is no probe on any port")) << garbage.errors;
    EXPECT_NE(garbage.errors.find("the library's log is in"), std::string::npos);
    EXPECT_FALSE(fs::exists("folder"));
}

TEST(RecordProgram, CalibrationIsFoundByTheSerialNumber) {
    make("made.bin --seconds 0.3 --ports 1");
    fs::create_directories("calibration/900000001");
    const Program_Run missing = record("folder --simulation made.bin --calibration calibration");
    EXPECT_EQ(missing.exit_code, 1);
    EXPECT_NE(missing.errors.find("the probe 900000001 on port 1 has no calibration file '"),
              std::string::npos)
        << missing.errors;
    EXPECT_NE(missing.errors.find("900000001/900000001_ADCCalibration.csv'"), std::string::npos);
    EXPECT_EQ(record("without --simulation made.bin --calibration calibration --no-calibration").exit_code,
              0);
    EXPECT_NE(content_of("without/orbe_recording.json").find("\"is_calibrated\": false"), std::string::npos);

    ASSERT_EQ(
        run_program(ORBE_RECORDING_PROGRAM " calibration calibration/900000001 --serial 900000001").exit_code,
        0);
    const Program_Run found = record("with --simulation made.bin --calibration calibration");
    EXPECT_EQ(found.exit_code, 0) << found.errors;
    EXPECT_NE(content_of("with/orbe_recording.json").find("\"is_calibrated\": true"), std::string::npos);

    // The raw stream takes it along: what is exported is what was recorded.
    EXPECT_EQ(record("raw --format raw --simulation made.bin --calibration calibration").exit_code, 0);
    EXPECT_TRUE(content_of("raw/raw_data.bin") == content_of("made.bin"));
    ASSERT_EQ(run_program(ORBE_RECORDING_PROGRAM " export raw/raw_data.bin exported").exit_code, 0);
    const Recorded_Samples recorded = recorded_probe("with", 0, false);
    EXPECT_GE(recorded.rows(), 8000U);
    EXPECT_EQ(difference(recorded, recorded_probe("exported", 0, false), first_sample("with"), 8000), "");
    EXPECT_NE(difference(recorded, made_probe("made.bin", 1, false), first_sample("with"), 0), "");
}

TEST(RecordProgram, FullDiskKeepsWhatWasWritten) {
    make("made.bin --seconds 2 --ports 1");
    for (const std::string format : {"spikeglx", "open-ephys", "raw"}) {
        // 10 MB a file: 0.43 s of the AP band, 0.3 s of the raw stream.
        const Program_Run run = run_program("trap '' XFSZ; ulimit -f 20000; " + record_program + format +
                                            " --simulation made.bin --format " + format);
        EXPECT_EQ(run.exit_code, 4) << run.errors;
        EXPECT_TRUE(tells(run, "the recording ended because it could not be written: ")) << run.errors;
        EXPECT_NE(run.errors.find("File too large"), std::string::npos) << run.errors;
        EXPECT_EQ(record("repair " + format).exit_code, 0);
    }
    const Made made("made.bin", {1});
    for (const std::string format : {"spikeglx", "open-ephys"}) {
        expect_recorded(format, made, 7000, 580);
        EXPECT_GE(recorded_probe(format, 0, false).rows(), 12'000U);
    }
    EXPECT_GE(fs::file_size("raw/raw_data.bin"), 9'000'000U);
}

TEST(RecordProgram, FolderThatVanishesIsTold) {
    make("made.bin --seconds 3 --ports 1");
    for (const std::string format : {"spikeglx", "open-ephys", "raw"}) {
        const Program_Run run =
            record_until(format, "--simulation made.bin --format " + format, "0.1", "rm -r " + format);
        EXPECT_EQ(run.exit_code, 4) << run.errors;
        EXPECT_TRUE(tells(run, "the recording ended because it could not be written: ")) << run.errors;
        EXPECT_NE(run.errors.find("No such file or directory"), std::string::npos) << run.errors;
    }
}

// At moments that differ from run to run; what was in the files then is what readers find after the repair.
TEST(RecordProgram, KilledRecordingIsWholeAfterItsRepair) {
    make("made.bin --seconds 2 --ports 4");
    const Made made("made.bin", {4});
    std::size_t longest = 0;
    for (const std::string format : {"spikeglx", "open-ephys"}) {
        for (const std::string moment : {"0.05", "0.33"}) {
            const std::string folder = format + moment;
            const Program_Run killed = record_until(folder, "--simulation made.bin --format " + format,
                                                    moment, "kill -KILL $recorder");
            EXPECT_EQ(killed.exit_code, 137) << killed.errors;
            const Program_Run repaired = record("repair " + folder);
            EXPECT_EQ(repaired.exit_code, 0) << repaired.errors;
            expect_recorded(folder, made, 0);
            longest = std::max(longest, recorded_probe(folder, 0, false).rows());
            EXPECT_TRUE(record("repair " + folder).output.ends_with(" is whole, and was.\n")) << folder;
        }
    }
    EXPECT_GT(longest, 3000U);
}

// The page's block for those without a box.
TEST(RecordProgram, ExamplesOfThePageRun) {
    const std::string page = content_of(ORBE_SOURCE_DIR "/docs/recording.md");
    const std::size_t block = page.find("```sh\norbe-recording make") + 6;
    ASSERT_LT(block, page.size());
    std::ofstream("example.sh") << page.substr(block, page.find("```", block) - block);
    const Program_Run run =
        run_program("TMPDIR=$PWD PATH=$(dirname " ORBE_RECORD_PROGRAM "):$PATH sh -e example.sh");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(recorded_probe("test", 1, false).rows(), 30'000U);
    EXPECT_GE(recorded_probe("again", 0, false).rows(), 30'000U);
}

// All lines but those that draw, which take Python.
TEST(RecordProgram, ExampleOfTheReadmeRuns) {
    const std::string readme = content_of(ORBE_SOURCE_DIR "/README.md");
    const std::size_t heading = readme.find("### From the box to a picture");
    ASSERT_NE(heading, std::string::npos);
    std::istringstream text(readme.substr(heading, readme.find("\n```\n", heading) - heading));
    fs::create_directory("build");
    fs::create_directory_symlink(fs::path(ORBE_RECORD_PROGRAM).parent_path(), "build/release");
    int lines = 0;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("build/release/")) {
            const Program_Run run = run_program("TMPDIR=$PWD " + line.substr(0, line.find("  #")));
            EXPECT_EQ(run.exit_code, 0) << line << "\n" << run.errors;
            ++lines;
        }
    }
    EXPECT_EQ(lines, 3);
    EXPECT_EQ(recorded_probe("monday", 3, false).rows(), 60'000U);
}

TEST(RecordProgram, RepairOfAnythingElseIsRefused) {
    fs::create_directory("folder");
    EXPECT_EQ(record("repair folder").exit_code, 1);
    EXPECT_EQ(record("repair missing").exit_code, 1);
}

} // namespace
