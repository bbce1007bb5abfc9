// The signal test in simulation mode, on recordings that run through the real data path.
#include "controller/Self_Test_Functions.h"

#include "Fake_ORBE_Controller.h"
#include "Self_Test_Fixture.h"

#include "generator/Recording_Generator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class Signal_Self_Test : public Self_Test_Fixture {
protected:
    static constexpr const char* path = "recordings/muxed_np_raw_data_2_minute.bin";

    Printed run(bool result) {
        bool passed = !result;
        const Printed printed = printed_by([&] { passed = m_controller->bist_Signal(port); });
        EXPECT_EQ(passed, result) << printed.out;
        return printed;
    }

    static std::string line(unsigned channel, const std::string& frequency) {
        return "Current pixel : " + std::to_string(channel) + ", peek frq = " + frequency +
               " Hz , peek mag : ";
    }

    // How many trials checked every channel with this frequency.
    static std::size_t trials(const std::string& printed, const std::string& frequency) {
        const std::size_t count = occurrences(printed, line(0, frequency));
        for (unsigned channel = 1; channel < 384; ++channel) {
            EXPECT_EQ(occurrences(printed, line(channel, frequency)), count) << channel;
        }
        return count;
    }

    static constexpr const char* end_of_test = "disable_streaming in simulation mode\n"
                                               "pause streaming (simulation)\nRestoring stream listeners\n";
};

TEST_F(Signal_Self_Test, ToneInBin40PassesAtTheFirstTrial) {
    write_recording(path, tone_recording(port, 40, 1));
    const Printed printed = run(true);
    EXPECT_EQ(trials(printed.out, "1183.71"), 1U);
    EXPECT_EQ(occurrences(printed.out, "Saving stream listeners\n"), 1U);
    EXPECT_EQ(occurrences(printed.out, "Frq check failed\n"), 0U);
    EXPECT_TRUE(without_worker_lines(printed.out)
                    .ends_with(std::string("Frq check passed at trial number : 0\n") + end_of_test));
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library::probe_init_part_2() np_port_id : 1, init_config : 4"),
              1);
    EXPECT_EQ(m_log.count("{ bist_Signal"), 1);
}

TEST_F(Signal_Self_Test, ToneInBin38FailsAfterFiveTrials) {
    write_recording(path, tone_recording(port, 38, 5));
    const Printed printed = run(false);
    EXPECT_EQ(trials(printed.out, "1124.53"), 5U);
    EXPECT_EQ(occurrences(printed.out, "Frq check failed\n"), 5U * 384U);
    EXPECT_EQ(occurrences(printed.out, "Frq check passed"), 0U);
    EXPECT_TRUE(without_worker_lines(printed.out).ends_with(std::string("Frq check failed\n") + end_of_test));
}

TEST_F(Signal_Self_Test, TrialPassesOnNewDataOnly) {
    // A block in which the probe does not send the signal yet, and one in which it does.
    recording::Recording_Options options;
    options.super_frames = 1792;
    options.ports = {port + 1};
    options.rhd = false;
    options.signals = {{recording::Signal_Kind::ramp, recording::every_channel()}};
    auto bytes = recording::make_recording(options);
    const auto tone = tone_recording(port, 40, 1);
    bytes.insert(bytes.end(), tone.begin(), tone.end());
    bytes.resize(bytes.size() + (std::size_t{1} << 20U)); // so that the last row is in a whole piece
    write_recording(path, bytes);
    const Printed printed = run(true);
    EXPECT_EQ(trials(printed.out, "1183.71"), 1U);
    EXPECT_EQ(occurrences(printed.out, "Frq check failed\n"), 384U);
    EXPECT_EQ(occurrences(printed.out, "Frq check passed at trial number : 1\n"), 1U);
}

TEST_F(Signal_Self_Test, LastTrialMayPass) {
    recording::Recording_Options options;
    options.super_frames = 4 * 1792;
    options.ports = {port + 1};
    options.rhd = false;
    options.signals = {{recording::Signal_Kind::ramp, recording::every_channel()}};
    auto bytes = recording::make_recording(options);
    const auto tone = tone_recording(port, 40, 1);
    bytes.insert(bytes.end(), tone.begin(), tone.end());
    bytes.resize(bytes.size() + (std::size_t{1} << 20U)); // so that the last row is in a whole piece
    write_recording(path, bytes);
    const Printed printed = run(true);
    EXPECT_EQ(occurrences(printed.out, "Frq check failed\n"), 4U * 384U);
    EXPECT_EQ(occurrences(printed.out, "Frq check passed at trial number : 4\n"), 1U);
    EXPECT_EQ(occurrences(printed.out, "Frq check passed"), 1U);
}

TEST_F(Signal_Self_Test, OneChannelWithoutTheSignalFails) {
    recording::Recording_Options options;
    options.blocks = 1;
    options.ports = {port + 1};
    options.signals = {recording::parse_signal_choice("tone"), recording::parse_signal_choice("pattern:383")};
    write_recording(path, recording::make_recording(options));
    const Printed printed = run(false);
    EXPECT_EQ(m_host_rhd->frames, 0U) << "RHD frames of a test are not the host's";
    EXPECT_EQ(occurrences(printed.out, line(382, "1183.71")), occurrences(printed.out, "Frq check failed\n"));
    EXPECT_GE(occurrences(printed.out, line(383, "29.5928")), 1U);
}

TEST_F(Signal_Self_Test, RecordingBeginsAnewUntilThereIsEnough) {
    auto bytes = tone_recording(port, 40, 1);
    end_block_after(bytes, 600);
    write_recording(path, bytes);
    const Printed printed = run(true);
    EXPECT_EQ(occurrences(printed.out, "Frq check passed at trial number : "), 1U);
    EXPECT_GT(m_waiter.count(10ms), 2U) << "the two pieces of the recording are read more than once";
}

TEST_F(Signal_Self_Test, RecordingWithoutThePortEndsTheTest) {
    write_recording(path, tone_recording(port + 1, 40, 1));
    const Printed printed = run(false);
    EXPECT_EQ(occurrences(printed.out, "Current pixel : "), 0U);
    EXPECT_TRUE(without_worker_lines(printed.out).ends_with(end_of_test));
    EXPECT_EQ(m_log.count(-2, "signal test : 0 AP samples instead of 1024"), 1);
    EXPECT_EQ(m_waiter.count(10ms), 2U);
}

TEST_F(Signal_Self_Test, LongRecordingWithoutThePortEndsTheTestAfterAHundredBuffers) {
    {
        const std::vector<char> other(std::size_t{1} << 20U);
        std::ofstream file(path, std::ios::binary);
        for (int piece = 0; piece < 120; ++piece) {
            file.write(other.data(), 1 << 20);
        }
    }
    run(false);
    EXPECT_EQ(m_waiter.count(10ms), 100U);
    EXPECT_EQ(m_log.count(-2, "signal test : 0 AP samples instead of 1024"), 1);
}

TEST_F(Signal_Self_Test, EmptyRecordingEndsTheTest) {
    write_recording(path, {});
    run(false);
    EXPECT_EQ(m_log.count(-2, "signal test : 0 AP samples instead of 1024"), 1);
}

TEST_F(Signal_Self_Test, PausedRecordingIsResumed) {
    write_recording(path, tone_recording(port, 40, 2));
    run(true);
    const Printed printed = run(true);
    EXPECT_EQ(occurrences(printed.out, "Alread prepard for streaming (simulation)\n"), 1U);
    EXPECT_EQ(occurrences(printed.out, "resume streaming (simulation)\n"), 1U);
}

TEST_F(Signal_Self_Test, ListenersAreRestoredAndAnAcquisitionFollows) {
    write_recording("host.bin", tone_recording(port, 40, 3));
    ASSERT_TRUE(m_controller->prepare_for_simulation_streaming("host.bin"));
    run(true);
    ASSERT_EQ(host_ap_sets(), 0U);
    acquire();
    EXPECT_EQ(host_ap_sets(), 2U * 1792U) << "from where the test stopped reading, and nothing of the test";
    m_controller->drop_unfinished_blocks();
    acquire();
    EXPECT_EQ(host_ap_sets(), 5U * 1792U) << "the whole recording";
}

TEST_F(Signal_Self_Test, ExceptionOfThePumpFailsTheTestAndTheListenersAreRestored) {
    write_recording(path, pattern_recording(port));
    lose_second_pump();
    const Printed printed = run(false);
    EXPECT_TRUE(without_worker_lines(printed.out).ends_with(end_of_test)) << printed.out;
    EXPECT_TRUE(printed.err.ends_with("Exception catched at execute_bist_signal_test : pump lost\n"));
    ASSERT_EQ(host_ap_sets(), 0U);
    while (m_controller->pump_data_to_demux()) {
    }
    acquire();
    EXPECT_EQ(host_ap_sets(), 1792U);
}

TEST_F(Signal_Self_Test, MissingRecordingFailsAndLeavesTheListeners) {
    const Printed printed = run(false);
    EXPECT_TRUE(printed.err.ends_with("Prep error\n"));
    EXPECT_TRUE(printed.out.ends_with(std::string("Saving stream listeners\nSim file open error : ") + path +
                                      "Restoring stream listeners\n"));
    write_recording("host.bin", pattern_recording(port));
    ASSERT_TRUE(m_controller->prepare_for_simulation_streaming("host.bin"));
    acquire();
    EXPECT_EQ(host_ap_sets(), 1792U);
}

TEST_F(Signal_Self_Test, PortThatDoesNotExistFails) {
    const Printed printed = printed_by([&] { EXPECT_FALSE(m_controller->bist_Signal(4)); });
    EXPECT_EQ(printed.out, "ORBE_Controller_Library::init invalid port id parameter\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(Signal_Self_Test, StreamInUseIsNotTaken) {
    write_recording("host.bin", pattern_recording(port));
    ASSERT_TRUE(m_controller->prepare_for_simulation_streaming("host.bin"));
    m_controller->enable_streaming(true, {0, 1, 2, 3}, true, {}, true);
    const Printed printed = run(false);
    EXPECT_EQ(printed.out + printed.err, "");
    EXPECT_EQ(m_log.count(-2, "bist_Signal needs the stream, which is in use"), 1);
}

TEST_F(Signal_Self_Test, ExceptionIsPrintedAndFailsTheTest) {
    const auto box = std::make_shared<Fake_ORBE_Controller>();
    box->set_write_error("register space lost");
    ORBE_Controller_Library controller(box, false);
    EXPECT_TRUE(controller.open());
    const Printed printed = printed_by([&] { EXPECT_FALSE(execute_bist_signal_test(controller, port)); });
    EXPECT_EQ(printed.err, "Exception catched at execute_bist_signal_test : register space lost\n");
    EXPECT_EQ(printed.out, "");
}

} // namespace
