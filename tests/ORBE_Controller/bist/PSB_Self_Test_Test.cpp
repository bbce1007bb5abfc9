// The PSB test in simulation mode, on recordings that run through the real data path.
#include "controller/Self_Test_Functions.h"

#include "Self_Test_Fixture.h"

#include "generator/Recording_Generator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class PSB_Self_Test : public Self_Test_Fixture {
protected:
    static constexpr const char* path = "recordings/muxed_raw_data_psb_test.bin";

    // A recording of so many good sample sets and as many spoilt ones, mixed.
    static void write(std::size_t successes, std::size_t failures) {
        auto recording = pattern_recording(port);
        for (std::size_t i = 0; i < failures; ++i) {
            spoil_sample(recording, successes != 0 && i < successes ? 2 * i : i, 383);
        }
        end_block_after(recording, successes + failures);
        write_recording(path, recording);
    }

    Printed run(bool result) {
        bool passed = !result;
        const Printed printed = printed_by([&] { passed = m_controller->bist_PSB(port); });
        EXPECT_EQ(passed, result) << printed.out;
        return printed;
    }

    static std::string end_of_test(std::uint32_t successes, std::uint32_t failures) {
        return "disable_streaming in simulation mode\npause streaming (simulation)\n"
               "successful_comparison_count : " +
               std::to_string(successes) + "\nfailed_comparison_count : " + std::to_string(failures) +
               "\nRestoring stream listeners\nEnd of Bist PSB test\n";
    }

    void expect_counts(std::size_t successes, std::size_t failures, bool result) {
        write(successes, failures);
        const std::string printed = without_worker_lines(run(result).out);
        EXPECT_TRUE(printed.ends_with(
            end_of_test(static_cast<std::uint32_t>(successes), static_cast<std::uint32_t>(failures))))
            << printed;
    }
};

TEST_F(PSB_Self_Test, PatternOnAllChannelsPasses) {
    write_recording(path, pattern_recording(port));
    const Printed printed = run(true);
    EXPECT_EQ(occurrences(printed.out, "Saving stream listeners\n"), 1U);
    EXPECT_EQ(occurrences(printed.out, std::string("Sim file opened : ") + path + "\n"), 1U);
    EXPECT_EQ(occurrences(printed.out, "resume streaming (simulation)\n"), 1U);
    EXPECT_TRUE(without_worker_lines(printed.out).ends_with(end_of_test(1792, 0)));
    EXPECT_EQ(occurrences(printed.err, "PSB test ch_data compare failed at : "), 0U);
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library::probe_init_part_2() np_port_id : 1, init_config : 2"),
              1);
    EXPECT_EQ(m_log.count("{ bist_PSB"), 2) << "the controller's scope and the probe's";
}

TEST_F(PSB_Self_Test, ElevenSuccessesAndNineFailuresPass) {
    expect_counts(11, 9, true);
}

TEST_F(PSB_Self_Test, TenFailuresFailEvenWithManySuccesses) {
    expect_counts(1500, 10, false);
}

TEST_F(PSB_Self_Test, TenSuccessesFailEvenWithoutFailures) {
    expect_counts(10, 0, false);
}

TEST_F(PSB_Self_Test, ElevenSuccessesAlonePass) {
    expect_counts(11, 0, true);
}

TEST_F(PSB_Self_Test, FailuresNameTheirChannel) {
    auto recording = pattern_recording(port);
    spoil_sample(recording, 3, 383);
    spoil_sample(recording, 5, 0);
    spoil_sample(recording, 9, 200);
    spoil_sample(recording, 9, 201);
    write_recording(path, recording);
    const Printed printed = run(true);
    std::string failures;
    std::istringstream lines(printed.err);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("PSB test")) {
            failures += line + '\n';
        }
    }
    EXPECT_EQ(failures, "PSB test ch_data compare failed at : 383\n"
                        "PSB test ch_data compare failed at : 0\n"
                        "PSB test ch_data compare failed at : 200\n");
    EXPECT_TRUE(without_worker_lines(printed.out).ends_with(end_of_test(1789, 3)));
}

TEST_F(PSB_Self_Test, OtherPortsAreNotLookedAt) {
    write_recording(path, pattern_recording(port + 1));
    EXPECT_TRUE(without_worker_lines(run(false).out).ends_with(end_of_test(0, 0)));
}

TEST_F(PSB_Self_Test, NoiseFails) {
    recording::Recording_Options options;
    options.blocks = 1;
    write_recording(path, recording::make_recording(options));
    EXPECT_TRUE(without_worker_lines(run(false).out).ends_with(end_of_test(0, 1792)));
}

TEST_F(PSB_Self_Test, NothingReachesTheHost) {
    recording::Recording_Options options;
    options.blocks = 1;
    write_recording(path, recording::make_recording(options));
    run(false);
    EXPECT_EQ(host_ap_sets(), 0U);
    EXPECT_EQ(m_host_rhd->frames, 0U);
}

TEST_F(PSB_Self_Test, ListenersAreRestoredAndAnAcquisitionFollows) {
    recording::Recording_Options options;
    options.blocks = 2;
    options.signals = {{recording::Signal_Kind::pattern, recording::every_channel()}};
    write_recording(path, recording::make_recording(options));
    run(true);
    ASSERT_EQ(host_ap_sets(), 0U);
    acquire();
    for (const auto& listener : m_host) {
        EXPECT_EQ(listener->ap_sets, 2U * 1792U) << "the whole recording, and nothing of the test";
    }
    EXPECT_GE(m_host_rhd->frames, 2U * 1792U);
}

TEST_F(PSB_Self_Test, NeitherAcquisitionNorTestSeesTheOthersData) {
    // Its end cuts an RHD frame and a block of every port.
    recording::Recording_Options options;
    options.blocks = 2;
    options.signals = {{recording::Signal_Kind::pattern, recording::every_channel()}};
    write_recording("host.bin", recording::make_recording(options));
    ASSERT_TRUE(m_controller->prepare_for_simulation_streaming("host.bin"));
    acquire();
    const std::vector<std::uint32_t> frames = std::exchange(m_host_rhd->timestamps, {});
    EXPECT_GE(frames.size(), 2U * 1792U);
    EXPECT_EQ(host_ap_sets(), 4U * 2U * 1792U);
    const Printed printed = run(true);
    EXPECT_TRUE(without_worker_lines(printed.out).ends_with(end_of_test(2 * 1792, 0)));
    EXPECT_EQ(occurrences(printed.err, "Resync warning 1\n"), 0U) << "the half frame was forgotten";
    EXPECT_TRUE(m_host_rhd->timestamps.empty());
    const Printed second = printed_by([&] { acquire(); });
    EXPECT_EQ(occurrences(second.err, "Resync warning 1\n"), 0U);
    EXPECT_EQ(m_host_rhd->timestamps, frames);
    EXPECT_EQ(host_ap_sets(), 2U * 4U * 2U * 1792U);
}

TEST_F(PSB_Self_Test, ExceptionOfThePumpPassesThroughAndTheListenersAreRestored) {
    write_recording(path, pattern_recording(port));
    lose_second_pump();
    const Printed printed = printed_by([&] {
        EXPECT_EQ(
            text_thrown_by<std::runtime_error>([&] { execute_psb_test(*m_controller, port, "recordings"); }),
            "pump lost");
    });
    EXPECT_EQ(occurrences(printed.out, "End of Bist PSB test\n"), 0U);
    EXPECT_TRUE(without_worker_lines(printed.out)
                    .ends_with("disable_streaming in simulation mode\npause streaming (simulation)\n"
                               "Restoring stream listeners\n"))
        << printed.out;
    ASSERT_EQ(host_ap_sets(), 0U);
    while (m_controller->pump_data_to_demux()) {
    }
    acquire();
    EXPECT_EQ(host_ap_sets(), 1792U);
}

TEST_F(PSB_Self_Test, PreparedStreamIsTakenAsItIs) {
    auto recording = pattern_recording(port);
    write_recording("host.bin", recording);
    ASSERT_TRUE(m_controller->prepare_for_simulation_streaming("host.bin"));
    const Printed printed = run(true);
    EXPECT_EQ(occurrences(printed.out, "Alread prepard for streaming (simulation)\n"), 1U);
    EXPECT_TRUE(without_worker_lines(printed.out).ends_with(end_of_test(1792, 0)));
}

TEST_F(PSB_Self_Test, TestsFollowEachOther) {
    write_recording(path, pattern_recording(port));
    for (int test = 0; test < 3; ++test) {
        EXPECT_TRUE(without_worker_lines(run(true).out).ends_with(end_of_test(1792, 0))) << test;
    }
}

TEST_F(PSB_Self_Test, EndsAfterAHundredBuffers) {
    // Rows of no stream, 101 MiB of them, then the pattern.
    const auto pattern = pattern_recording(port);
    {
        std::vector<std::uint8_t> other(std::size_t{1} << 20U, 0);
        std::ofstream file(path, std::ios::binary);
        for (int piece = 0; piece < 101; ++piece) {
            file.write(reinterpret_cast<const char*>(other.data()), 1 << 20);
        }
        file.write(reinterpret_cast<const char*>(pattern.data()),
                   static_cast<std::streamsize>(pattern.size()));
    }
    EXPECT_TRUE(without_worker_lines(run(false).out).ends_with(end_of_test(0, 0)));
    EXPECT_EQ(m_waiter.count(10ms), 100U);
}

TEST_F(PSB_Self_Test, MissingRecordingFailsAndLeavesTheListeners) {
    const Printed printed = run(false);
    EXPECT_TRUE(printed.out.ends_with(std::string("Saving stream listeners\nSim file open error : ") + path +
                                      "Restoring stream listeners\n"))
        << printed.out;
    write_recording("host.bin", pattern_recording(port));
    ASSERT_TRUE(m_controller->prepare_for_simulation_streaming("host.bin"));
    acquire();
    EXPECT_EQ(host_ap_sets(), 1792U);
}

TEST_F(PSB_Self_Test, PortThatDoesNotExistFails) {
    const Printed printed = printed_by([&] { EXPECT_FALSE(m_controller->bist_PSB(4)); });
    EXPECT_EQ(printed.out, "ORBE_Controller_Library::init invalid port id parameter\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(PSB_Self_Test, ProbeThatDoesNotComeUpFailsBeforeTheListenersAreTouched) {
    ORBE_Controller_Library unopened(true);
    const Printed printed = printed_by([&] { EXPECT_FALSE(execute_psb_test(unopened, port, "recordings")); });
    EXPECT_EQ(occurrences(printed.out, "Saving stream listeners\n"), 0U);
    EXPECT_EQ(m_log.count(-2, "probe_init_part_2 failed"), 1);
}

TEST_F(PSB_Self_Test, StreamInUseIsNotTaken) {
    write_recording("host.bin", pattern_recording(port));
    ASSERT_TRUE(m_controller->prepare_for_simulation_streaming("host.bin"));
    m_controller->enable_streaming(true, {0, 1, 2, 3}, true, {}, true);
    const Printed printed = run(false);
    EXPECT_EQ(printed.out + printed.err, "");
    EXPECT_EQ(m_log.count(-2, "bist_PSB needs the stream, which is in use"), 1);
    acquire();
    EXPECT_EQ(host_ap_sets(), 1792U);
    run(true);
}

TEST_F(PSB_Self_Test, RequestForNothingDoesNotTakeTheStream) {
    write_recording(path, pattern_recording(port));
    m_controller->enable_streaming(false, {}, false, {}, false);
    run(true);
}

TEST_F(PSB_Self_Test, RecordingsLieInTheResourceDirectoryUnlessSet) {
    ORBE_Controller_Library controller(true);
    ASSERT_TRUE(controller.open());
    ASSERT_TRUE(controller.pre_init(true));
    const Printed printed = printed_by([&] { EXPECT_FALSE(controller.bist_PSB(port)); });
    EXPECT_EQ(occurrences(printed.out, "Sim file open error : " + default_resource_directory() +
                                           "/muxed_raw_data_psb_test.bin"),
              1U);
}

} // namespace
