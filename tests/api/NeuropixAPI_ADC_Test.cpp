// Reading the auxiliary ADC inputs.
#include "API_Fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <thread>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::npoe_adapter;
using Pelgar::ORBE::test::API_Fixture;

class ADC_Reading : public API_Fixture {
protected:
    static void publish_frames(std::uint16_t count) {
        for (std::uint16_t number = 0; number < count; ++number) {
            Pelgar::ORBE::demux::RHD_Frame frame;
            frame.board_adc_data.fill(static_cast<std::uint16_t>(32768 + number));
            frame.ttl_in = 0x200U * number;
            current_rhd_converter()->publish_rhd_frame(frame);
        }
    }

    std::array<PacketInfo, 4> m_info{};
    std::array<std::int16_t, 4 * 12> m_data{};
    int m_packets_read = -1;
};

TEST_F(ADC_Reading, TwelveValuesAPacketOfWhichEightAreSamples) {
    open_simulation();
    publish_frames(3);
    m_info.fill({77, 77, 77});
    m_data.fill(77);
    // The channel count is not looked at.
    EXPECT_EQ(ADC_readPackets(0, m_info.data(), m_data.data(), 999, 3, &m_packets_read), SUCCESS);
    EXPECT_EQ(m_packets_read, 3);
    for (std::uint32_t packet = 0; packet < 3; ++packet) {
        for (std::uint32_t i = 0; i < 12; ++i) {
            EXPECT_EQ(m_data[12 * packet + i], i < 8 ? static_cast<int>(packet) : 0);
        }
        EXPECT_EQ(m_info[packet].Timestamp, 0U);
        EXPECT_EQ(m_info[packet].payloadlength, 0);
        const std::uint32_t base = packet == 0 ? 0U : ((0x200U * packet) >> 8U) | 1U;
        EXPECT_EQ(m_info[packet].Status, base << 6U);
    }
    EXPECT_EQ(m_data[36], 77) << "nothing beyond the packets read is touched";
    EXPECT_EQ(m_info[3].Timestamp, 77U);
}

TEST_F(ADC_Reading, ReadOfNothing) {
    open_simulation();
    publish_frames(1);
    EXPECT_EQ(ADC_readPackets(0, m_info.data(), m_data.data(), 12, 0, &m_packets_read), SUCCESS);
    EXPECT_EQ(m_packets_read, 0);
    EXPECT_EQ(current_rhd_converter()->queue().size(), 1U);
}

TEST_F(ADC_Reading, NullOutputsAreSkipped) {
    open_simulation();
    publish_frames(2);
    EXPECT_EQ(ADC_readPackets(0, nullptr, nullptr, 12, 2, nullptr), SUCCESS);
    EXPECT_EQ(current_rhd_converter()->queue().size(), 0U);
}

TEST_F(ADC_Reading, AStopReportsZeroPacketsThoughSomeWereCopied) {
    open_simulation();
    publish_frames(2);
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(ADC_readPackets(0, m_info.data(), m_data.data(), 12, 2, &m_packets_read), SUCCESS);
    EXPECT_EQ(m_packets_read, 0);
    EXPECT_EQ(current_rhd_converter()->queue().size(), 1U) << "one packet was taken before the stop was seen";
}

TEST_F(ADC_Reading, BlockedReaderReturnsWithZeroOnceTheBasestationCloses) {
    open_simulation();
    publish_frames(1);
    m_data.fill(77);
    m_info.fill({77, 77, 77});
    const auto converter = current_rhd_converter();
    std::atomic<int> amount{-1};
    std::thread reader([&] {
        int read = -1;
        ADC_readPackets(0, m_info.data(), m_data.data(), 12, 2, &read);
        amount = read;
    });
    while (converter->queue().size() != 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(amount, -1);
    EXPECT_EQ(closeBS(0), SUCCESS);
    reader.join();
    EXPECT_EQ(amount, 0);
    EXPECT_EQ(m_data[12], 77) << "the packet that never came is not written";
    EXPECT_EQ(m_info[1].Status, 77);
}

TEST_F(ADC_Reading, TurningAReaderAwayIsLogged) {
    open_simulation();
    const auto converter = current_rhd_converter();
    std::thread reader([&] { ADC_readPackets(0, m_info.data(), m_data.data(), 12, 1, &m_packets_read); });
    // Whoever reads holds the mutex, and asks the queue for a packet whatever happens meanwhile.
    while (converter->reader_mutex().try_lock()) {
        converter->reader_mutex().unlock();
        std::this_thread::yield();
    }
    EXPECT_EQ(closeBS(0), SUCCESS);
    reader.join();
    EXPECT_EQ(m_packets_read, 0);
    EXPECT_EQ(m_log.count("MT_RHD_PXI_Queue::peek_xfer_buffer_from_queue signalled for exit"), 1);
}

TEST_F(ADC_Reading, WithoutAnOpenBasestationNothingIsRead) {
    EXPECT_EQ(ADC_readPackets(0, m_info.data(), m_data.data(), 12, 2, &m_packets_read), SUCCESS);
    EXPECT_EQ(m_packets_read, 0);
}

} // namespace
