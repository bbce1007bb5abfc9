// Data sources and the stream in hardware mode, through the controller.
#include "Hardware_Streaming_Fixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Accesses = std::vector<Register_Access>;

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

TEST_F(Hardware_Streaming, PumpBeforePreparingFailsInBothModes) {
    EXPECT_FALSE(m_controller->pump_data_to_demux());
    ORBE_Controller_Library simulated(true);
    EXPECT_FALSE(simulated.pump_data_to_demux());
    EXPECT_EQ(m_log.count(-2, "pump_data_to_demux before streaming was prepared"), 2);
}

TEST_F(Hardware_Streaming, PumpOfAStreamThatWasPreparedForTheOtherModeFails) {
    ORBE_Controller_Library simulated(true);
    simulated.prepare_for_streaming();
    EXPECT_FALSE(simulated.pump_data_to_demux());
    EXPECT_EQ(m_log.count(-2, "pump_data_to_demux before streaming was prepared"), 1);
}

TEST_F(Hardware_Streaming, RegistersThatFailAtTheEndDoNotKeepTheThreads) {
    m_controller->prepare_for_streaming();
    m_box->set_write_error("register space lost");
    m_controller.reset();
    EXPECT_EQ(m_log.count(-2, "finalize_stream failed : register space lost"), 1);
    EXPECT_EQ(m_log.count("Main demux worker threads done"), 1);
}

} // namespace
