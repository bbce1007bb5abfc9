// Runs orbe-record on the modelled box, within the test's process.
#include "Box_Clock.h"
#include "Expected_Chains.h"
#include "Record_Program.h"
#include "Virtual_Box_Controller.h"

#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

// Where the program makes its working directories.
void use_working_directory_for_temporary_files() {
#if defined(_WIN32)
    _putenv_s("TMP", std::filesystem::current_path().string().c_str());
#else
    setenv("TMPDIR", std::filesystem::current_path().c_str(), 1);
#endif
}

struct Run_Result {
    int exit_code = -1;
    std::string output;
    std::string errors;
};

// Whether a line of the program's own begins so; on a slow computer others tell how the recording comes
// along.
bool tells(const Run_Result& run, const std::string& beginning) {
    return ("\n" + run.errors).find("\norbe-record: " + beginning) != std::string::npos;
}

class Record_From_Box : public testing::Test {
protected:
    explicit Record_From_Box(recording::Recording_Options options = {})
        : m_box(std::make_shared<Virtual_Box>(std::move(options))) {
        *npoe_adapter::g_controller_factory = [box = m_box](bool) {
            return std::make_shared<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(box),
                                                             false);
        };
        use_working_directory_for_temporary_files();
    }

    ~Record_From_Box() override {
        m_box->stream().set_limit(DMA_Source::unlimited);
        *npoe_adapter::g_controller_factory = {};
    }

    Run_Result record(std::vector<const char*> arguments) {
        m_box->stream().set_observer([this](std::span<const std::uint8_t> bytes) { note(bytes); });
        const Box_Clock clock(m_box->stream());
        arguments.insert(arguments.begin(), "orbe-record");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Run_Result result;
        result.exit_code = recorder::run_record_program(static_cast<int>(arguments.size()), arguments.data());
        result.errors = testing::internal::GetCapturedStderr();
        result.output = testing::internal::GetCapturedStdout();
        return result;
    }

    static std::string content_of(const std::filesystem::path& path) {
        std::ostringstream content;
        content << std::ifstream(path, std::ios::binary).rdbuf();
        return content.str();
    }

    // What the box sends, and, since a box that is closed has no power left on its ports, what is in the
    // probes when it begins to.
    void note(std::span<const std::uint8_t> bytes) {
        if (m_sent.empty()) {
            for (std::size_t port = 0; port < m_chains.size(); ++port) {
                m_chains[port] = chains_in_probe(port);
            }
        }
        m_sent.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }

    Chain_Set chains_in_probe(std::size_t port) const {
        const Virtual_Headstage& headstage = m_box->headstage(port);
        return {headstage.chain(Probe_ASIC::shank_chain),
                headstage.chain(Probe_ASIC::base_chain_of_even_channels),
                headstage.chain(Probe_ASIC::base_chain_of_odd_channels)};
    }

    std::shared_ptr<Virtual_Box> m_box;
    std::string m_sent;
    std::array<Chain_Set, 4> m_chains;
};

// What every configuration has in common, with the calibration that probes without one have.
Expected_Chains chains_with(unsigned ap_code, unsigned lfp_code, unsigned reference, bool is_filter_off) {
    Expected_Chains expected;
    for (unsigned channel = 0; channel < 384; ++channel) {
        expected.gain(channel, ap_code, lfp_code);
        expected.reference(channel, reference);
        expected.ap_filter(channel, is_filter_off);
    }
    for (unsigned adc = 0; adc < 32; ++adc) {
        expected.set_number("CompP " + std::to_string(adc), 16, 5);
        expected.set_number("CompN " + std::to_string(adc), 16, 5);
    }
    return expected;
}

TEST_F(Record_From_Box, SettingsReachEveryProbeAndSamplesTheFolder) {
    std::ofstream("map.csv") << "port,channel,electrode\n2,0,384\n2,1,-1\n2,300,684\n";
    const Run_Result run =
        record({"folder", "--seconds", "0.1", "--no-calibration", "--ap-gain", "1000", "--lfp-gain", "125",
                "--reference", "tip", "--ap-filter", "off", "--electrodes", "map.csv"});
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    for (const std::string stream : {"probe 1", "probe 2", "probe 3", "probe 4", "ADC"}) {
        EXPECT_NE(run.output.find(stream + ": 0.100 s, 0 samples lost\n"), std::string::npos) << run.output;
    }
    for (std::size_t port = 0; port < 4; ++port) {
        Expected_Chains expected = chains_with(4, 1, 1, true);
        for (unsigned channel = 0; channel < 384; ++channel) {
            expected.connect(channel, channel != 191);
        }
        if (port == 1) {
            expected.connect(0, false);
            expected.connect(384, true);
            expected.connect(1, false);
            expected.connect(300, false);
            expected.connect(684, true);
        }
        expected.set("tip 1", true);
        expected.set("tip 2", true);
        EXPECT_EQ(m_chains[port], expected.chains()) << "port " << port + 1;
    }
    const std::string description = content_of("folder/orbe_recording.json");
    EXPECT_NE(description.find("\"source\": \"box\""), std::string::npos);
    EXPECT_NE(description.find("\"serial_number\": 1234605616436508552"), std::string::npos) << description;
}

TEST_F(Record_From_Box, BankAndInternalReferenceReachTheProbe) {
    const Run_Result run = record({"folder", "--seconds", "0.1", "--no-calibration", "--bank", "1",
                                   "--reference", "bank1", "--format", "open-ephys"});
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    Expected_Chains expected = chains_with(3, 2, 2, false);
    for (unsigned channel = 0; channel < 384; ++channel) {
        expected.connect(384 + channel, true);
    }
    EXPECT_EQ(m_chains[2], expected.chains());
}

TEST_F(Record_From_Box, ProbesWithoutCalibrationAreRecordedOnlyWhenTheUserSaysSo) {
    const Run_Result run = record({"folder", "--seconds", "0.1"});
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_TRUE(tells(run,
                      "the probe 1234605616436508552 on port 1 needs its calibration (--calibration DIR); to "
                      "record without one, say --no-calibration\n"))
        << run.errors;
    EXPECT_FALSE(std::filesystem::exists("folder"));
}

TEST_F(Record_From_Box, RawStreamIsRecordedAsTheBoxSendsIt) {
    const Run_Result run = record({"folder", "--seconds", "0.1", "--no-calibration", "--format", "raw"});
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_GE(m_sent.size(), std::size_t{3000} * 4 * 65 * 16);
    EXPECT_TRUE(content_of("folder/raw_data.bin") == m_sent);
}

TEST_F(Record_From_Box, BoxThatStopsSendingEndsTheRecordingAsALoss) {
    m_box->stream().fail_read(100, DMA_Read_Fault{});
    const Run_Result run = record({"folder", "--seconds", "60", "--no-calibration"});
    EXPECT_EQ(run.exit_code, 3);
    EXPECT_TRUE(tells(run, "the box has stopped sending\n")) << run.errors;
    EXPECT_NE(run.output.find("probe 1: "), std::string::npos);
}

// A second, or as many as the environment says: four probes and the ADC inputs, at the box's own pace.
TEST_F(Record_From_Box, LongRunLosesNothing) {
    const char* const wanted = std::getenv("ORBE_RECORD_SECONDS");
    const std::string seconds = wanted == nullptr ? ORBE_RECORD_SECONDS : wanted;
    for (const char* const format : {"spikeglx", "open-ephys"}) {
        const std::clock_t cpu_before = std::clock();
        const auto begin = std::chrono::steady_clock::now();
        const Run_Result run =
            record({format, "--seconds", seconds.c_str(), "--no-calibration", "--format", format});
        EXPECT_EQ(run.exit_code, 0) << run.errors;
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
        std::printf("%s, %.1f s with %.1f s of CPU, those of the modelled box included\n%s", format,
                    elapsed.count(), static_cast<double>(std::clock() - cpu_before) / CLOCKS_PER_SEC,
                    run.output.c_str());
    }
}

TEST_F(Record_From_Box, BoxThatIsNotThereIsTold) {
    *npoe_adapter::g_controller_factory = [](bool) -> std::shared_ptr<ORBE_Controller_Library> {
        throw std::runtime_error("no box is connected");
    };
    const Run_Result run = record({"folder", "--no-calibration"});
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_TRUE(tells(run, "the box cannot be opened (5, openBS : no box is connected)\n")) << run.errors;
}

} // namespace
