// The pump on a recording, in simulation mode.
#include "Counting_RHD_Listener.h"
#include "Hardware_Streaming_Fixture.h"
#include "generator/Recording_Generator.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class Simulated_Streaming : public testing::Test {
protected:
    void write_recording(std::size_t size) {
        std::ofstream("recording.bin", std::ios::binary) << std::string(size, '\0');
    }

    Log_Capture m_log;
    Waiter_Guard m_waiter;
    ORBE_Controller_Library m_controller{true};
};

TEST_F(Simulated_Streaming, PreparingOpensTheFileAndStartsTheDemultiplexer) {
    write_recording(mebibyte);
    const Printed printed =
        printed_by([&] { EXPECT_TRUE(m_controller.prepare_for_simulation_streaming("recording.bin")); });
    EXPECT_EQ(printed.out.find("Sim file opened : recording.bin\n"), 0U);
    EXPECT_EQ(occurrences(printed.out, "reset_and_resync_counters requested.\n"), 4U);
    EXPECT_TRUE(printed.out.ends_with("Simulation worker thread started\n"));
}

TEST_F(Simulated_Streaming, FileNamesMayHoldAnyByte) {
    const std::string name = "gr\xF6\xDF"
                             "e.bin";
    std::ofstream(name, std::ios::binary) << std::string(mebibyte, '\0');
    const Printed printed =
        printed_by([&] { EXPECT_TRUE(m_controller.prepare_for_simulation_streaming(name)); });
    EXPECT_EQ(printed.out.find("Sim file opened : " + name + "\n"), 0U);
}

TEST_F(Simulated_Streaming, FramesHaveAsManyRhdStreamsAsWereEnabled) {
    recording::Recording_Options options;
    options.blocks = 1;
    options.rhd_streams = 3;
    const std::vector<std::uint8_t> bytes = recording::make_recording(options);
    std::ofstream("recording.bin", std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    const auto listener = std::make_shared<Counting_RHD_Listener>();
    m_controller.set_RHD_aqustion_listener(listener);
    ASSERT_TRUE(m_controller.prepare_for_simulation_streaming("recording.bin"));
    m_controller.enable_streaming(false, {}, true, {1, 4, 9}, false);
    while (m_controller.pump_data_to_demux()) {
    }
    m_controller.finalize_stream();
    EXPECT_GT(listener->frames, 0U);
    EXPECT_EQ(listener->streams, 3U);
}

TEST_F(Simulated_Streaming, PreparingTwiceOnlyPrints) {
    write_recording(mebibyte);
    EXPECT_TRUE(m_controller.prepare_for_simulation_streaming("recording.bin"));
    const Printed printed =
        printed_by([&] { EXPECT_TRUE(m_controller.prepare_for_simulation_streaming("recording.bin")); });
    EXPECT_EQ(printed.out, "Alread prepard for streaming (simulation)\n");
}

TEST_F(Simulated_Streaming, MissingFileOrDirectoryIsRefused) {
    std::filesystem::create_directory("folder");
    for (const std::string path : {"missing.bin", "folder", ""}) {
        const Printed printed =
            printed_by([&] { EXPECT_FALSE(m_controller.prepare_for_simulation_streaming(path)); });
        EXPECT_EQ(printed.out, "Sim file open error : " + path);
    }
}

TEST_F(Simulated_Streaming, TwoAndAHalfMebibytesArePushedAsTwoBuffersThenRewound) {
    write_recording(5 * mebibyte / 2);
    ASSERT_TRUE(m_controller.prepare_for_simulation_streaming("recording.bin"));
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_controller.pump_data_to_demux());
    EXPECT_TRUE(m_controller.pump_data_to_demux());
    EXPECT_FALSE(m_controller.pump_data_to_demux());
    EXPECT_EQ(m_waiter.count(10ms), 2U) << "10 ms after each piece that was read";
    EXPECT_TRUE(m_controller.pump_data_to_demux()) << "from the beginning of the file";
    m_controller.finalize_stream();
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStdout(), refused_transfer), 3U);
}

TEST_F(Simulated_Streaming, PiecesThatArePlayedInRealTimeAreAsShortAsTransfersOfTheBox) {
    constexpr std::uint32_t piece = 64 * 1024;
    write_recording(5 * piece / 2);
    m_controller.set_prompt_delivery(piece, 1);
    ASSERT_TRUE(m_controller.prepare_for_simulation_streaming("recording.bin"));
    m_controller.play_from_beginning_in_real_time();
    testing::internal::CaptureStdout();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(m_controller.pump_data_to_demux());
    }
    EXPECT_FALSE(m_controller.pump_data_to_demux());
    m_controller.finalize_stream();
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStdout(), refused_transfer), 3U);
}

TEST_F(Simulated_Streaming, PausedPumpStillReadsAndWaitsButPushesNothing) {
    write_recording(2 * mebibyte);
    ASSERT_TRUE(m_controller.prepare_for_simulation_streaming("recording.bin"));
    const Printed pausing = printed_by([&] { m_controller.disable_streaming(); });
    EXPECT_EQ(pausing.out, "disable_streaming in simulation mode\npause streaming (simulation)\n");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_controller.pump_data_to_demux());
    EXPECT_TRUE(m_controller.pump_data_to_demux());
    EXPECT_FALSE(m_controller.pump_data_to_demux());
    EXPECT_EQ(m_waiter.count(10ms), 2U);
    m_controller.finalize_stream();
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStdout(), refused_transfer), 0U);
}

TEST_F(Simulated_Streaming, EnablingResumesAndARequestForNothingIsToldOff) {
    write_recording(2 * mebibyte);
    ASSERT_TRUE(m_controller.prepare_for_simulation_streaming("recording.bin"));
    m_controller.disable_streaming();
    EXPECT_EQ(printed_by([&] { m_controller.enable_streaming(false, {0}, false, {}, true); }).out,
              "Enable stream incorrect request (simulation)\n");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_controller.pump_data_to_demux());
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed_by([&] { m_controller.enable_streaming(false, {}, true, {}, false); }).out,
              "resume streaming (simulation)\n");
    m_controller.disable_streaming();
    EXPECT_EQ(printed_by([&] { m_controller.enable_streaming(true, {0}, false, {}, false); }).out,
              "resume streaming (simulation)\n");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_controller.pump_data_to_demux());
    m_controller.finalize_stream();
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStdout(), refused_transfer), 1U);
}

} // namespace
