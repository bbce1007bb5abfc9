// Runs `orbe-recording export` as a user does, and the examples of its page.
#include "Program_Run.h"
#include "Read_Samples.h"
#include "description/Description_File.h"
#include "repair/Repair.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::recorder;
using test::run_program;

constexpr const char* program = ORBE_RECORDING_PROGRAM " ";

class Export_Program : public testing::Test {
protected:
    static void make_raw(const std::string& options) {
        const auto run = run_program(std::string(program) + "make raw_data.bin --signal ramp " + options);
        ASSERT_EQ(run.exit_code, 0) << run.errors;
    }

    static test::Program_Run run_export(const std::string& arguments) {
        return run_program(std::string(program) + "export raw_data.bin " + arguments);
    }
};

// The code blocks of a page in this language.
std::vector<std::string> examples(const std::string& page, const std::string& language) {
    const std::string text = read_file(page);
    const std::string begin = "\n```" + language + "\n";
    std::vector<std::string> blocks;
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at)) {
        at += begin.size();
        blocks.push_back(text.substr(at, text.find("\n```", at) + 1 - at));
    }
    return blocks;
}

TEST_F(Export_Program, RunsTheExamplesOfItsPage) {
    make_raw("--seconds 1.2 --ports 1,2");
    std::size_t exports = 0;
    for (const std::string& block : examples(ORBE_RECORDING_PAGE, "sh")) {
        if (block.find("orbe-recording export") == std::string::npos) {
            continue;
        }
        ++exports;
        write_file("example.sh", block);
        const auto run = run_program("PATH=$(dirname " ORBE_RECORDING_PROGRAM "):$PATH sh -e example.sh");
        EXPECT_EQ(run.exit_code, 0) << run.errors;
    }
    EXPECT_EQ(exports, 1U);
    EXPECT_EQ(read_description("part").description.first_sample, 15'000U);
    EXPECT_EQ(std::filesystem::file_size("part/part_g0/part_g0_imec1/part_g0_t0.imec1.ap.bin"),
              7'500U * 385 * 2);
    EXPECT_EQ(std::filesystem::file_size("few/few_g0/few_g0_imec0/few_g0_t0.imec0.lf.bin") % (98 * 2), 0U);
    std::size_t scripts = 0;
    for (const std::string& block : examples(ORBE_RECORDING_PAGE, "python")) {
        if (block.find("neo") == std::string::npos) {
            continue;
        }
        ++scripts;
        write_file("example.py", block + "assert microvolts.shape == (30000, 384)\n");
        const auto run = run_program(ORBE_SYSTEM_PYTHON " example.py");
        EXPECT_EQ(run.exit_code, 0) << run.errors;
    }
    EXPECT_EQ(scripts, 1U);
}

TEST_F(Export_Program, SaysWhatItHasWrittenAndWhatIsLost) {
    make_raw("--seconds 0.2 --ports 2 --fault lost-row:2@65010");
    const auto run = run_export("run");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_TRUE(run.output.starts_with("imec0.ap: 5")) << run.output;
    EXPECT_EQ(run.output.find(" 0 lost"), run.output.rfind(" 0 lost")) << run.output;
    EXPECT_NE(run.output.find("obx0: 5999 samples, 0 lost\n"), std::string::npos) << run.output;
    EXPECT_EQ(run.errors, "");
    EXPECT_TRUE(std::filesystem::exists("run/decoder.txt"));
    EXPECT_FALSE(std::filesystem::exists("ORBE.log"));
    EXPECT_TRUE(repair_recording("run").empty());
}

TEST_F(Export_Program, TakesTheSettingsBesideTheRecording) {
    make_raw("--seconds 0.1 --ports 1,3");
    Recording_Description description;
    description.start_time = Start_Time(std::chrono::milliseconds(1'700'000'000'123));
    for (const int port : {1, 3}) {
        description.probes.push_back(default_probe(port));
        description.probes.back().serial_number = static_cast<std::uint64_t>(4'711 + port);
        description.probes.back().channels[5].ap_gain = 3'000;
        description.probes.back().is_calibrated = true;
    }
    description.adc = ADC_Description{2.5, 12};
    write_description(".", "raw", description);

    auto run = run_export("run");
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_NE(run.errors.find("there is no 4712_gainCalValues.csv in"), std::string::npos) << run.errors;
    EXPECT_FALSE(std::filesystem::exists("run"));

    run = run_export("run --uncalibrated --ports 3 --lfp-gain 50");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    const Described_Folder made = read_description("run");
    EXPECT_EQ(made.format, "spikeglx");
    EXPECT_EQ(made.description.source, "raw_data.bin");
    EXPECT_EQ(made.description.start_time, description.start_time);
    ASSERT_EQ(made.description.probes.size(), 1U);
    EXPECT_EQ(made.description.probes[0].serial_number, 4'714U);
    EXPECT_EQ(made.description.probes[0].channels[5].ap_gain, 3'000);
    EXPECT_EQ(made.description.probes[0].channels[5].lfp_gain, 50);
    EXPECT_FALSE(made.description.probes[0].is_calibrated);
    EXPECT_EQ(made.description.adc->range_volts, 2.5);

    std::filesystem::create_directories("calibration/4714");
    run = run_program(std::string(program) + "calibration calibration/4714 --serial 4714");
    ASSERT_EQ(run.exit_code, 0) << run.errors;
    run = run_export("calibrated --calibration calibration --ports 3");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_TRUE(read_description("calibrated").description.probes[0].is_calibrated);
    EXPECT_NE(read_file("calibrated/calibrated_g0/calibrated_g0_imec0/calibrated_g0_t0.imec0.ap.bin"),
              read_file("run/run_g0/run_g0_imec0/run_g0_t0.imec0.ap.bin"));
}

TEST_F(Export_Program, TellsWhatIsWrongBeforeItWrites) {
    make_raw("--seconds 0.1 --ports 1 --no-rhd");

    struct Case {
        const char* arguments;
        const char* message;
    };

    for (const Case& wrong : {Case{"run --ports 2", "there is no data of port 2"},
                              Case{"run --channels 5-384", "there is no channel 384: they are 0 to 383"},
                              Case{"run --channels 7-5", "'7-5' ends before it begins"},
                              Case{"run --channels x", "channel 'x' is not a number"},
                              Case{"run --format wax", "wax"}, Case{"run --ap-gain 7", "7"}}) {
        const auto run = run_export(wrong.arguments);
        EXPECT_EQ(run.exit_code, 2) << wrong.arguments;
        EXPECT_NE(run.errors.find(wrong.message), std::string::npos) << run.errors;
        EXPECT_FALSE(std::filesystem::exists("run"));
    }
    write_file("raw_data.bin", "no recording at all, but long enough for a row of the box");
    auto run = run_export("run");
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.errors, "orbe-recording: 'raw_data.bin' is no recording of this box\n");
    std::filesystem::remove("raw_data.bin");
    run = run_export("run");
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_NE(run.errors.find("cannot read 'raw_data.bin': No such file or directory"), std::string::npos)
        << run.errors;
}

TEST_F(Export_Program, DoesNotWriteOverARecording) {
    make_raw("--seconds 0.1 --ports 1");
    EXPECT_EQ(run_export("run").exit_code, 0);
    const auto run = run_export("run --format open-ephys");
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_NE(run.errors.find("'run' holds a recording already"), std::string::npos) << run.errors;
}

TEST_F(Export_Program, SaysThatTheDiskIsFullAndLeavesWhatOpensAfterARepair) {
    make_raw("--seconds 1 --ports 1");
    // No file may become larger than 8 MiB.
    const auto run =
        run_program("ulimit -f 16384; trap '' XFSZ; " + std::string(program) + "export raw_data.bin run");
    EXPECT_EQ(run.exit_code, 1);
    const std::string file = "run/run_g0/run_g0_imec0/run_g0_t0.imec0.ap.bin";
    EXPECT_NE(run.errors.find("cannot write '" + file + "'"), std::string::npos) << run.errors;
    repair_recording("run");
    const auto size = std::filesystem::file_size(file);
    EXPECT_GT(size, std::uintmax_t{7} << 20U);
    EXPECT_EQ(size % 770, 0U);
    const auto script =
        run_program(ORBE_SYSTEM_PYTHON " -c 'from neo.rawio import SpikeGLXRawIO as R; r = R(\"run\"); "
                                       "r.parse_header(); print(r.segment_t_stop(0, 0) > 0.3)'");
    EXPECT_EQ(script.output, "True\n") << script.errors;
}

} // namespace
