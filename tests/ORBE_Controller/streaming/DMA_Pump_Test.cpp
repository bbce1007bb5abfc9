// The pump on the box's DMA stream, and the end of a stream.
#include "Hardware_Streaming_Fixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Accesses = std::vector<Register_Access>;

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
    EXPECT_EQ(occurrences(printed, refused_transfer), 1U);
    EXPECT_EQ(occurrences(printed, ", packet size : 1048576\n"), 1U);
    EXPECT_EQ(m_log.count(0, "Read issue counter : 1"), 1);
    EXPECT_EQ(m_box->read_calls(), (std::vector<Fake_ORBE_Controller::Read_Call>{{0, true}}));
}

TEST_F(Hardware_Pump, DriverNeverFillsATransferThatIsQueued) {
    std::vector<std::uint8_t*> filled;
    for (int read = 0; read < 3; ++read) {
        m_box->queue_stream_read(std::vector<std::uint8_t>(mebibyte));
        EXPECT_TRUE(m_controller->pump_data_to_demux());
        filled.push_back(m_box->setup_calls().back().buffer);
    }
    EXPECT_NE(filled[0], filled[1]);
    EXPECT_NE(filled[1], filled[2]);
    // An empty read queues nothing, so that the next one fills the same again.
    const std::size_t registered = m_box->setup_calls().size();
    m_box->queue_stream_read({});
    EXPECT_TRUE(m_controller->pump_data_to_demux());
    m_box->queue_stream_read({});
    EXPECT_TRUE(m_controller->pump_data_to_demux());
    EXPECT_EQ(m_box->setup_calls().size(), registered + 1);
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

TEST_F(Hardware_Pump, ReadThatAnswersMoreThanTheBufferHoldsIsPushedAsAFullOne) {
    m_box->queue_stream_read(std::vector<std::uint8_t>(mebibyte, 0), mebibyte + 1);
    m_box->queue_stream_read(std::vector<std::uint8_t>(mebibyte, 0), 0xFFFF'FFFF);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(m_controller->pump_data_to_demux());
    EXPECT_TRUE(m_controller->pump_data_to_demux());
    EXPECT_EQ(m_controller->get_total_bytes_read(), 2 * mebibyte);
    m_controller->finalize_stream();
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(occurrences(printed, "R:1048577 byte read from device\n"), 1U);
    EXPECT_EQ(occurrences(printed, "R:4294967295 byte read from device\n"), 1U);
    EXPECT_EQ(occurrences(printed, ", packet size : 1048576\n"), 1U);
    EXPECT_EQ(occurrences(printed, refused_transfer), 2U);
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
    EXPECT_EQ(occurrences(testing::internal::GetCapturedStdout(), refused_transfer), 1U);
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

} // namespace
