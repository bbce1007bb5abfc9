// The streams of the host mode by themselves: what a run takes in, and when a packet is the host's.
#include "Port_Check.h"

#include <host_streams/ADC_Inputs.h>
#include <host_streams/ADC_Stream.h>
#include <host_streams/Electrode_Stream.h>
#include <host_streams/Sample_Stamp.h>
#include <host_streams/Sync_Levels.h>
#include <host_streams/Sync_Source.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::npoe_adapter;
using Pelgar::ORBE::test::sample_of;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t streaming = 1;

class Host_Streams : public testing::Test {
protected:
    Host_Streams() {
        m_probe.begin_streaming(streaming);
        m_adc.begin_streaming(streaming);
    }

    // The probe's next sample, whose values tell its number. Published as the port's worker does it.
    void publish_sample(std::uint64_t super_frame) {
        std::uint16_t values[demux::channel_count];
        if (super_frame % 12 == 11) {
            std::fill(std::begin(values), std::end(values),
                      static_cast<std::uint16_t>(super_frame / 12 % 1024));
            m_probe.publish_lp_ch_data(values);
        }
        m_probe.begin_sample({super_frame, super_frame % 12 == 0});
        std::fill(std::begin(values), std::end(values), static_cast<std::uint16_t>(super_frame % 1024));
        m_probe.publish_ap_ch_data(values);
    }

    void publish_samples(std::uint64_t begin, std::uint64_t end) {
        for (std::uint64_t super_frame = begin; super_frame < end; ++super_frame) {
            publish_sample(super_frame);
        }
    }

    void publish_frame(std::uint32_t stamp) {
        m_frame.timestamp = stamp;
        m_adc.publish_rhd_frame(m_frame);
    }

    // Without a sync input no packet waits for its level.
    void let_no_packet_wait() { m_sync_source.clear(SM_Output_StatusBit); }

    using Published = std::atomic<std::uint64_t>;

    // Makes `run` (Published& -> whether it was as it should be) again and again, while `publish` (a number
    // that only grows) goes on on another thread without a pause. How many runs were not as they should be.
    template <typename Publish, typename Run>
    static int wrong_runs(Publish publish, Run run) {
        std::atomic<bool> ending{false};
        Published published{0};
        std::thread producer([&] {
            for (std::uint64_t i = 0; !ending; ++i) {
                publish(i);
                published = i + 1;
            }
        });
        int wrong = 0;
        const auto last = Clock::now() + std::chrono::milliseconds(700);
        while (Clock::now() < last) {
            wrong += run(published) ? 0 : 1;
        }
        ending = true;
        producer.join();
        return wrong;
    }

    // What was under way when a run ended has come, and nobody gets it.
    template <typename Stream, typename Take>
    static bool ends_with_nothing(Stream& stream, const Published& published, Take take) {
        stream.begin_run();
        wait_until([&] { return take() != 0; });
        stream.end_run();
        const std::uint64_t before = published;
        wait_until([&] { return published >= before + 2; });
        return take() == 0;
    }

    template <typename Done>
    static void wait_until(Done done) {
        while (!done()) {
            std::this_thread::yield();
        }
    }

    Sync_Source m_sync_source;
    Sync_Levels m_sync_levels;
    ADC_Inputs m_inputs;
    demux::RHD_Frame m_frame;
    Electrode_Stream m_probe{1, m_sync_source, m_sync_levels};
    ADC_Stream m_adc{m_inputs, m_sync_source, m_sync_levels};
};

TEST_F(Host_Streams, RunThatBeginsInMidCycleBeginsWithTheNextWholePacket) {
    let_no_packet_wait();
    publish_samples(100, 103);
    m_probe.begin_run();
    publish_samples(103, 133);
    std::array<electrodePacket, 4> packets{};
    ASSERT_EQ(m_probe.take(packets.data(), packets.size()), 2U);
    EXPECT_EQ(packets[0].apData[0][0] + 512, 108);
    EXPECT_EQ(packets[0].lfpData[0] + 512, 108 / 12);
    EXPECT_EQ(packets[0].timestamp[0], stamp_of(8)) << "counted from the first sample of the streaming";
    EXPECT_EQ(packets[1].apData[11][0] + 512, 131);
    EXPECT_EQ(packets[1].lfpData[0] + 512, 131 / 12);
}

TEST_F(Host_Streams, PacketBehindAGapHasTheLFPSampleThatWasFinishedWithinIt) {
    let_no_packet_wait();
    m_probe.begin_run();
    publish_samples(0, 28);
    publish_samples(33, 33 + 12 * 20);
    std::array<electrodePacket, 22> packets{};
    ASSERT_EQ(m_probe.take(packets.data(), packets.size()), 22U);
    for (std::size_t i = 0; i < packets.size(); ++i) {
        EXPECT_EQ(packets[i].lfpData[0] + 512, static_cast<int>(i)) << "each once";
    }
    EXPECT_EQ(packets[2].timestamp[4] - packets[2].timestamp[3], stamp_of(33) - stamp_of(27));
    EXPECT_EQ(sample_of(packets[3].timestamp[0]), 41U) << "in mid-cycle to the end of the run";
}

TEST_F(Host_Streams, PacketStaysUntilTheSyncLevelsOfItsSamplesAreKnown) {
    m_sync_levels.restart(streaming);
    m_probe.begin_run();
    const auto begin = Clock::now();
    publish_samples(0, 12);
    electrodePacket packet{};
    const std::size_t taken = m_probe.take(&packet, 1);
    // A machine may be so busy that its time is over.
    EXPECT_TRUE(taken == 0 || Clock::now() - begin >= std::chrono::milliseconds(20));
    m_sync_levels.record(0, false);
    m_sync_levels.record(5, true);
    m_sync_levels.record(11, false);
    if (taken == 0) {
        ASSERT_EQ(m_probe.take(&packet, 1), 1U);
        for (std::size_t row = 0; row < 12; ++row) {
            EXPECT_EQ(packet.Status[row], row >= 5 && row < 11 ? ELECTRODEPACKET_STATUS_SYNC : 0) << row;
        }
    }
}

TEST_F(Host_Streams, PacketIsGivenAwayAfter20msWithoutAnySyncLevel) {
    m_probe.begin_run();
    const auto begin = Clock::now();
    publish_samples(0, 12);
    electrodePacket packet{};
    while (m_probe.take(&packet, 1) == 0 && Clock::now() - begin < std::chrono::seconds(60)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(20));
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(60));
    EXPECT_EQ(packet.Status[11], 0);
}

TEST_F(Host_Streams, RunBeginsWithNoPacketOfTheRunBefore) {
    let_no_packet_wait();
    EXPECT_EQ(wrong_runs([this](std::uint64_t i) { publish_sample(i); },
                         [this](const Published& published) {
                             const std::uint64_t before = published;
                             m_probe.begin_run();
                             electrodePacket packet;
                             wait_until([&] { return m_probe.take(&packet, 1) != 0; });
                             return sample_of(packet.timestamp[0]) >= before;
                         }),
              0);
}

TEST_F(Host_Streams, NoPacketComesOnceARunHasEnded) {
    let_no_packet_wait();
    EXPECT_EQ(wrong_runs([this](std::uint64_t i) { publish_sample(i); },
                         [this](const Published& published) {
                             return ends_with_nothing(m_probe, published,
                                                      [this] { return m_probe.take(nullptr, 1); });
                         }),
              0);
}

TEST_F(Host_Streams, NoADCPacketComesOnceARunHasEnded) {
    EXPECT_EQ(wrong_runs([this](std::uint64_t i) { publish_frame(static_cast<std::uint32_t>(i)); },
                         [this](const Published& published) {
                             return ends_with_nothing(m_adc, published,
                                                      [this] { return m_adc.take(nullptr, nullptr, 0, 1); });
                         }),
              0);
}

TEST_F(Host_Streams, ADCStampsLeaveOutTheFramesThatAreLost) {
    m_adc.begin_run();
    constexpr std::uint32_t first = 0xFFFF'FFFE; // wraps
    const std::array<std::uint32_t, 5> frames{0, 1, 2, 9, 10};
    for (const std::uint32_t frame : frames) {
        publish_frame(first + frame);
    }
    std::array<PacketInfo, frames.size()> infos{};
    ASSERT_EQ(m_adc.take(infos.data(), nullptr, 0, infos.size()), infos.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(infos[i].Timestamp, stamp_of(frames[i])) << i;
    }
}

// Inputs, of which the box has eight, then a comparator for each, then nothing, however long the host's rows
// are.
TEST_F(Host_Streams, ADCRowEndsWithTheComparators) {
    m_frame.board_adc_data.fill(0x8000);
    m_frame.ttl_in = 0x0F00;
    m_adc.begin_run();
    publish_frame(0);
    std::array<std::int16_t, 96> row{};
    row.fill(-1);
    ASSERT_EQ(m_adc.take(nullptr, row.data(), row.size(), 1), 1U);
    for (std::size_t column = 0; column < row.size(); ++column) {
        EXPECT_EQ(row[column], column >= 20 && column < 24 ? 1 : 0) << column;
    }
}

} // namespace
