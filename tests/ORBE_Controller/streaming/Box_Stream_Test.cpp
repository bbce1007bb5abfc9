// Streaming control and the pump.
#include "Controller_Fixture.h"

#include "Recording_Generator.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Accesses = std::vector<Register_Access>;

constexpr std::size_t mebibyte = 0x100000;

// A transfer that the demultiplexer refuses at its first byte, so that only its arrival shows.
const std::string refused = "Async_PSB_And_RHD_Demux : Main mux data invalid, discarding data packet\n";

std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

class Hardware_Streaming : public Controller_Fixture {
protected:
    static constexpr std::uint32_t continuous_mode = 0x1000;
    static constexpr std::uint32_t rhd_streams = 0x1000 + 4 * 0x14;
    static constexpr std::uint32_t ttl_out = 0x1000 + 4 * 0x15;
    static constexpr std::uint32_t ttl_in = 0x1000 + 4 * 0x23;
    static constexpr std::uint32_t fsm_trigger = 0x10A4;
};

TEST_F(Hardware_Streaming, PreparingStartsTheDemultiplexerAndHandsTheBufferToTheDriver) {
    const Printed printed = printed_by([&] { m_controller->prepare_for_streaming(); });
    EXPECT_EQ(m_log.count(0, "m_page_aligned_recv_buffer_size = 1048576"), 1);
    EXPECT_EQ(m_log.count(0, "Worker thread started"), 1);
    EXPECT_EQ(m_log.count("{ start_worker_threads"), 1);
    EXPECT_EQ(m_log.count("{ signal_to_resync"), 1);
    EXPECT_EQ(occurrences(printed.out, "reset_and_resync_counters requested.\n"), 4U);
    ASSERT_EQ(m_box->setup_calls().size(), 1U);
    const auto setup = m_box->setup_calls().front();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(setup.buffer) % 4096, 0U);
    EXPECT_EQ(setup.size, mebibyte);
    EXPECT_EQ(setup.flag, 0);
    EXPECT_EQ(setup.extra, 1000U);
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(configuration, 0), write_of(configuration, 0x80)}));
}

TEST_F(Hardware_Streaming, PreparingTwiceOnlyLogs) {
    m_controller->prepare_for_streaming();
    m_controller->prepare_for_streaming();
    EXPECT_EQ(m_log.count(0, "Already prepard for streaming"), 1);
    EXPECT_EQ(m_box->setup_calls().size(), 1U);
}

TEST_F(Hardware_Streaming, EnablingBothSources) {
    m_registers.set_value(configuration, 0x540);
    const Printed printed = printed_by([&] {
        m_controller->enable_streaming(true, {0, 1, 2, 3}, true, {0, 5}, true);
    });
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(configuration, 0x54F), write_of(configuration, 0x74F),
                                              write_of(configuration, 0x54F), write_of(continuous_mode, 2),
                                              write_of(rhd_streams, 0x21), write_of(ttl_out, 0x12345678),
                                              write_of(fsm_trigger, 1)}));
    EXPECT_EQ(occurrences(printed.out, "reset_and_resync_counters requested.\n"), 4U);
}

TEST_F(Hardware_Streaming, EnablingProbesOnlyWithoutATrigger) {
    m_controller->enable_streaming(true, {2}, false, {}, false);
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(configuration, 0x4)}));
}

TEST_F(Hardware_Streaming, EnablingRhdOnlyLeavesTheConfigurationAlone) {
    m_controller->enable_streaming(false, {1}, true, {}, true);
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(continuous_mode, 2), write_of(rhd_streams, 0),
                                              write_of(ttl_out, 0x12345678), write_of(fsm_trigger, 1)}));
}

TEST_F(Hardware_Streaming, EnablingAPortThatDoesNotExistThrowsBeforeAnyWrite) {
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] {
                  m_controller->enable_streaming(true, {0, 4}, true, {}, true);
              }),
              "enable_np_streams argument invalid");
    EXPECT_EQ(m_registers.writes(), Accesses{});
}

TEST_F(Hardware_Streaming, DisablingClearsTheProbeStreamsAndTheRhdStreams) {
    m_registers.set_value(configuration, 0x54F);
    m_controller->disable_streaming();
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(configuration, 0x540), write_of(rhd_streams, 0)}));
}

TEST_F(Hardware_Streaming, DisablingDataSourcesClearsTheConfiguration) {
    m_registers.set_value(configuration, 0x54F);
    m_controller->disable_data_sources();
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(configuration, 0), write_of(continuous_mode, 0)}));
}

TEST_F(Hardware_Streaming, TriggersAndTtlReachTheirRegisters) {
    m_controller->send_soft_trigger();
    m_controller->set_hw_trigger_ttl_source(3);
    m_controller->set_ttl_out(0xA5);
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(configuration, 0x200), write_of(configuration, 0),
                                              write_of(configuration, 0x1800), write_of(ttl_out, 0xA5)}));
    m_registers.set_value(ttl_in, 0x77);
    EXPECT_EQ(m_controller->get_ttl_in(), 0x77U);
}

class Hardware_Pump : public Hardware_Streaming {
protected:
    Hardware_Pump() { m_controller->prepare_for_streaming(); }

    // Ends the stream, so that everything pushed has been looked at, and answers what that printed.
    Printed finalize() {
        return printed_by([&] { m_controller->finalize_stream(); });
    }
};

TEST_F(Hardware_Pump, FullReadIsPushedAndPrintsNothingOfItsOwn) {
    m_box->queue_stream_read(std::vector<std::uint8_t>(mebibyte, 0));
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_controller->pump_data_to_demux());
    m_controller->finalize_stream();
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(occurrences(printed, " byte read from device\n"), 0U);
    EXPECT_EQ(occurrences(printed, refused), 1U);
    EXPECT_EQ(occurrences(printed, ", packet size : 1048576\n"), 1U);
    EXPECT_EQ(m_log.count(0, "Read issue counter : 1"), 1);
    EXPECT_EQ(m_box->read_calls(), (std::vector<Fake_ORBE_Controller::Read_Call>{{0, true}}));
}

TEST_F(Hardware_Pump, ShortReadIsPushedWithItsSize) {
    m_box->queue_stream_read(std::vector<std::uint8_t>(160, 0));
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_controller->pump_data_to_demux());
    m_controller->finalize_stream();
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(occurrences(printed, "R:160 byte read from device\n"), 1U);
    EXPECT_EQ(occurrences(printed, ", packet size : 160\n"), 1U);
}

TEST_F(Hardware_Streaming, PumpBeforePreparingFailsInBothModes) {
    EXPECT_FALSE(m_controller->pump_data_to_demux());
    ORBE_Controller_Library simulated(true);
    EXPECT_FALSE(simulated.pump_data_to_demux());
    EXPECT_EQ(m_log.count(-2, "pump_data_to_demux before streaming was prepared"), 2);
}

TEST_F(Hardware_Streaming, RegistersThatFailAtTheEndDoNotKeepTheThreads) {
    m_controller->prepare_for_streaming();
    m_box->set_write_error("register space lost");
    m_controller.reset();
    EXPECT_EQ(m_log.count(-2, "finalize_stream failed : register space lost"), 1);
    EXPECT_EQ(m_log.count("Main demux worker threads done"), 1);
}

TEST_F(Hardware_Pump, EmptyReadPushesNothingAndStillCounts) {
    m_box->queue_stream_read({});
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_controller->pump_data_to_demux());
    m_controller->finalize_stream();
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(occurrences(printed, "R:0 byte read from device\n"), 1U);
    EXPECT_EQ(occurrences(printed, "Elements in main demux queue: 1, packet size : 0\n"), 1U)
        << "the poison packet is the first that arrives";
    EXPECT_EQ(m_log.count(0, "Read issue counter : 1"), 1);
}

TEST_F(Hardware_Pump, Every256thPumpPrintsItsCount) {
    for (int pump = 1; pump <= 600; ++pump) {
        const Printed printed = printed_by([&] { EXPECT_TRUE(m_controller->pump_data_to_demux()); });
        EXPECT_EQ(occurrences(printed.out, "R:0 byte read from device\n"), 1U);
        EXPECT_EQ(occurrences(printed.out, "A:0 byte read from device\n"), pump % 256 == 0 ? 1U : 0U) << pump;
    }
}

TEST_F(Hardware_Pump, TransferShorterThanARowIsDroppedAndTheStreamGoesOn) {
    m_box->queue_stream_read(std::vector<std::uint8_t>(15, 0xD0));
    m_box->queue_stream_read(std::vector<std::uint8_t>(32, 0));
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_controller->pump_data_to_demux());
    EXPECT_TRUE(m_controller->pump_data_to_demux());
    m_controller->finalize_stream();
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStdout(), refused), 1U);
    EXPECT_EQ(m_log.count(-2, "Transfer buffer dropped : Buffer must contain at least 16 byte"), 1);
    EXPECT_EQ(m_log.count("Joining with NP workers"), 1);
}

TEST_F(Hardware_Pump, FailedReadEndsThePumpAndLeavesTheRegistersAlone) {
    m_box->queue_stream_error("c2h transfer failed");
    EXPECT_FALSE(m_controller->pump_data_to_demux());
    EXPECT_EQ(m_log.count(-1, "pump_hw_data_to_demux exception catched : c2h transfer failed"), 1);
    EXPECT_EQ(m_controller->get_current_error_level(), Error_Level::dma_pump);
    EXPECT_EQ(static_cast<int>(m_controller->get_current_error_level()), 3);
    m_registers.clear_accesses();
    m_controller->disable_streaming();
    EXPECT_EQ(m_log.count(-1, "Skipping commands for disabling streams ( m_current_error_level > 0 )"), 1);
    m_controller->disable_data_sources();
    m_controller->finalize_stream();
    EXPECT_EQ(m_registers.accesses(), Accesses{});
    EXPECT_EQ(m_log.count("Purge on exit disabled"), 0);
    EXPECT_EQ(m_log.count("Read issue counter : 0"), 1);
}

TEST_F(Hardware_Pump, FinalizingStopsSourcesJoinsAndReports) {
    m_registers.clear_accesses();
    const Printed printed = finalize();
    EXPECT_EQ(m_registers.writes(), (Accesses{write_of(configuration, 0), write_of(continuous_mode, 0)}));
    EXPECT_EQ(m_log.count(0, "Purge on exit disabled"), 1);
    EXPECT_EQ(m_log.count("{ poison_queue"), 1 + 4) << "the main queue and the four port queues";
    EXPECT_EQ(occurrences(printed.out, "Waiting for worker thread\n"), m_waiter.count(1000ms));
    EXPECT_EQ(m_log.count(0, "Read issue counter : 0"), 1);
    EXPECT_EQ(m_log.count(0, "Total processed SF counter : 0"), 1);
    EXPECT_EQ(m_log.count(0, "Total processed RHD frames : 0"), 1);
    m_log.clear();
    m_controller->finalize_stream();
    EXPECT_EQ(m_log.count(0, "m_main_demux_thread_started already not started"), 1);
}

TEST_F(Hardware_Pump, PurgeReadsOnceAndReleasesTheBuffer) {
    m_box->queue_stream_read(std::vector<std::uint8_t>(4096, 1));
    Controller_Test_Peer::stream(*m_controller).purge_read_buffers();
    EXPECT_EQ(m_log.count(0, " 4096 bytes purged"), 1);
    EXPECT_EQ(m_log.count("m_current_error_level != 0"), 0);
    EXPECT_EQ(m_box->read_calls(), (std::vector<Fake_ORBE_Controller::Read_Call>{{0, false}}));
}

TEST_F(Hardware_Pump, PurgeLogsAnErrorLevelAndAnException) {
    m_box->queue_stream_error("c2h transfer failed");
    EXPECT_FALSE(m_controller->pump_data_to_demux());
    m_box->queue_stream_error("c2h transfer failed");
    Controller_Test_Peer::stream(*m_controller).purge_read_buffers();
    EXPECT_EQ(m_log.count(0, "m_current_error_level != 0"), 1);
    EXPECT_EQ(m_log.count(-1, "purge_read_buffers exception catched : c2h transfer failed"), 1);
}

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
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStdout(), refused), 3U);
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
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStdout(), refused), 0U);
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
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStdout(), refused), 1U);
}

class Counting_Listener : public demux::I_L2_Demux_CH_Results {
public:
    void publish_ap_ch_data(std::uint16_t (&values)[384]) override {
        ++ap_sets;
        sum += values[0];
    }

    void publish_lp_ch_data(std::uint16_t (&)[384]) override { ++lfp_sets; }

    std::atomic<unsigned> ap_sets{0};
    std::atomic<unsigned> lfp_sets{0};
    std::atomic<std::uint64_t> sum{0};
};

class Counting_RHD_Listener : public demux::I_RHD_Frame_Listener {
public:
    void publish_rhd_frame(demux::RHD_Frame& frame) override {
        ++frames;
        streams = 0;
        for (const auto& stream : frame.amplifier_data) {
            streams += stream ? 1U : 0U;
        }
    }

    std::atomic<unsigned> frames{0};
    std::atomic<unsigned> streams{0};
};

class Listeners : public Controller_Fixture {
protected:
    Listeners() {
        m_controller->pre_init(true);
        m_controller->prepare_for_streaming();
        m_controller->set_RHD_aqustion_listener(m_rhd);
    }

    // Streams one block of every port through the pump, ends the stream, and answers what was printed.
    std::string stream_one_block(unsigned rhd_streams = 0) {
        recording::Recording_Options options;
        options.blocks = 1;
        options.rhd_streams = rhd_streams;
        const std::vector<std::uint8_t> stream = recording::make_recording(options);
        testing::internal::CaptureStdout();
        for (std::size_t at = 0; at < stream.size(); at += mebibyte) {
            const auto first = stream.begin() + static_cast<std::ptrdiff_t>(at);
            m_box->queue_stream_read({first, first + static_cast<std::ptrdiff_t>(mebibyte)});
            EXPECT_TRUE(m_controller->pump_data_to_demux());
        }
        m_controller->finalize_stream();
        return testing::internal::GetCapturedStdout();
    }

    static constexpr unsigned super_frames = 1792;

    std::shared_ptr<Counting_Listener> m_listener = std::make_shared<Counting_Listener>();
    std::shared_ptr<Counting_RHD_Listener> m_rhd = std::make_shared<Counting_RHD_Listener>();
};

TEST_F(Listeners, PortIsDeliveredThroughItsGainFilter) {
    m_controller->set_NP_aqustion_listener(m_listener, 2, true);
    stream_one_block();
    EXPECT_EQ(m_listener->ap_sets, super_frames);
    EXPECT_EQ(m_listener->lfp_sets, super_frames / 12);
    EXPECT_GT(m_listener->sum, 0U);
    EXPECT_GT(m_rhd->frames, super_frames);
    EXPECT_EQ(m_log.count("Total processed SF counter : 0"), 1);
    EXPECT_EQ(m_log.count("Total processed RHD frames : " + std::to_string(m_rhd->frames)), 1);
}

TEST_F(Listeners, FramesHaveAsManyRhdStreamsAsWereEnabled) {
    m_controller->enable_streaming(false, {}, true, {0, 5}, false);
    stream_one_block(2);
    EXPECT_GT(m_rhd->frames, super_frames);
    EXPECT_EQ(m_rhd->streams, 2U);
}

TEST_F(Listeners, InitialisingAgainMakesNewFilters) {
    m_controller->set_NP_aqustion_listener(m_listener, 2, true);
    EXPECT_TRUE(m_controller->pre_init(true));
    stream_one_block();
    EXPECT_EQ(m_listener->ap_sets, 0U) << "the old filter, and the route through it, are gone";
}

TEST_F(Listeners, FilterSaysWhenItsListenerHasGone) {
    m_controller->set_NP_aqustion_listener(m_listener, 2, true);
    m_listener.reset();
    EXPECT_EQ(occurrences(stream_one_block(), "C_L2_CH_Gain_Fix_Filter has no ap listener\n"), super_frames)
        << "the filter stands between the demultiplexer and the listener";
}

TEST_F(Listeners, PortIsDeliveredDirectly) {
    m_controller->set_NP_aqustion_listener(m_listener, 3, false);
    const std::string printed = stream_one_block();
    EXPECT_EQ(m_listener->ap_sets, super_frames);
    EXPECT_EQ(occurrences(printed, "C_L2_CH_Gain_Fix_Filter has no"), 0U);
}

TEST_F(Listeners, SavedListenersComeBack) {
    const auto replacement = std::make_shared<Counting_Listener>();
    const auto rhd_replacement = std::make_shared<Counting_RHD_Listener>();
    std::array<std::shared_ptr<Counting_Listener>, 4> others;
    for (const unsigned port : {0U, 2U}) {
        others[port] = std::make_shared<Counting_Listener>();
        m_controller->set_NP_aqustion_listener(others[port], port, false);
    }
    m_controller->set_NP_aqustion_listener(m_listener, 1, false);
    EXPECT_EQ(printed_by([&] { m_controller->save_stream_listeners(); }).out, "Saving stream listeners\n");
    for (unsigned port = 0; port < 4; ++port) {
        m_controller->set_NP_aqustion_listener(replacement, port, false);
    }
    m_controller->set_RHD_aqustion_listener(rhd_replacement);
    EXPECT_EQ(printed_by([&] { m_controller->restore_stream_listeners(); }).out,
              "Restoring stream listeners\n");
    stream_one_block();
    EXPECT_EQ(m_listener->ap_sets, super_frames);
    EXPECT_EQ(others[0]->ap_sets, super_frames);
    EXPECT_EQ(others[2]->ap_sets, super_frames);
    EXPECT_NE(others[0]->sum, m_listener->sum) << "each port has its own again";
    EXPECT_NE(others[2]->sum, m_listener->sum);
    EXPECT_EQ(replacement->ap_sets, 0U) << "a port that had no listener has none again";
    EXPECT_GT(m_rhd->frames, 0U);
    EXPECT_EQ(rhd_replacement->frames, 0U);
}

TEST_F(Listeners, PortsOutOfBoundsAreRefused) {
    EXPECT_EQ(text_thrown_by<std::out_of_range>(
                  [&] { m_controller->set_NP_aqustion_listener(m_listener, 4, true); }),
              "invalid array<T, N> subscript");
    EXPECT_EQ(text_thrown_by<std::runtime_error>(
                  [&] { m_controller->set_NP_aqustion_listener(m_listener, 4, false); }),
              "illegal np demux index inside Async_PSB_And_RHD_Demux::set_L2_CH_Results_Listener");
}

TEST_F(Hardware_Streaming, FilterMustExistBeforeItIsRoutedThrough) {
    const auto listener = std::make_shared<Counting_Listener>();
    EXPECT_EQ(text_thrown_by<std::runtime_error>(
                  [&] { m_controller->set_NP_aqustion_listener(listener, 0, true); }),
              "set_NP_aqustion_listener before pre_init");
}

} // namespace
