// How soon the host mode hands data on, and what stands at the borders of a run. On the virtual box.
#include "Held_Box.h"
#include "Port_Check.h"

#include <adapter/Adapter_State.h>
#include <probe/I_L2_Demux_CH_Results.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

// What the box sends in 5 ms: of a probe port, of the ADC inputs.
constexpr std::size_t ticks_in_5_ms = 150;
constexpr std::size_t port_bytes_in_5_ms = ticks_in_5_ms * 65 * 16;
constexpr std::size_t adc_bytes_in_5_ms = ticks_in_5_ms * 20 * 16 / 7;

// ---- Freshness.

class Host_Delivery : public Held_Box {
protected:
    // The most bytes that one read of the stream has brought, from now on.
    void watch_reads() {
        m_box->stream().set_observer([this](std::span<const std::uint8_t> bytes) {
            m_largest_read = std::max<std::size_t>(m_largest_read, bytes.size());
            ++m_reads;
        });
    }

    void wait_for_reads(std::size_t reads) const {
        EXPECT_TRUE(wait_until([&] { return m_reads >= reads; }, patience));
    }

    std::atomic<std::size_t> m_largest_read{0};
    std::atomic<std::size_t> m_reads{0};
};

TEST_F(Host_Delivery, ReadsHold5msOfOnePortAtMost) {
    for (const std::size_t port : {1U, 2U, 3U}) {
        m_box->lock_at_look(port, std::nullopt);
    }
    open_pxi();
    m_clock.reset();
    watch_reads();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    wait_for_reads(5);
    EXPECT_EQ(arm(slot), SUCCESS);
    EXPECT_LE(m_largest_read, port_bytes_in_5_ms);
}

TEST_F(Host_Delivery, ReadsHold5msOfTheADCInputsAtMostWhereThereIsNoProbe) {
    for (const std::size_t port : {0U, 1U}) {
        m_box->lock_at_look(port, std::nullopt);
    }
    open_usb();
    m_clock.reset();
    watch_reads();
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    EXPECT_EQ(read_adc(1000, 12).size(), 1000U);
    EXPECT_EQ(arm(usb_slot), SUCCESS);
    EXPECT_GT(m_reads, 5U);
    EXPECT_LE(m_largest_read, adc_bytes_in_5_ms);
}

TEST_F(Host_Delivery, PacketsAreThereBeforeTheyAre5msOldBesideTheRead) {
    open_pxi();
    hold();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    // A read of four ports, and the packet that is not full yet.
    constexpr int in_read = 32;
    constexpr int in_packet = 12;
    int made = 0;
    for (int step = 0; step < 40; ++step) {
        let_make(13);
        made += 13;
        const int due = made - in_read - static_cast<int>(ticks_in_5_ms) - in_packet;
        ASSERT_TRUE(wait_until([&] { return queued(1) * 12 >= due; }, std::chrono::seconds(5)))
            << queued(1) << " packets of " << made << " samples";
    }
}

// ---- The borders of a run.

class Host_Borders : public Held_Box {
protected:
    // The ramps tell the probe's own numbers, as long as it has not sent more than 1024 super frames.
    static void expect_whole_cycles_from(std::uint64_t first_number, std::uint64_t first_sample) {
        const auto packets = read_packets(1, 10);
        ASSERT_EQ(packets.size(), 10U);
        std::uint64_t number = (first_number + 11) / 12 * 12;
        for (const auto& packet : packets) {
            for (std::size_t row = 0; row < 12; ++row) {
                EXPECT_EQ(packet.apData[row][0] + 512, static_cast<int>(number + row));
                EXPECT_EQ(sample_of(packet.timestamp[row]), number + row - first_sample);
            }
            EXPECT_EQ(packet.lfpData[0] + 512, static_cast<int>(number / 12));
            number += 12;
        }
    }
};

TEST_F(Host_Borders, RunThatBeginsInMidCycleHasWholePackets) {
    open_pxi();
    hold();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    let_make(305);
    EXPECT_EQ(arm(slot), SUCCESS);
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    let_make(500);
    expect_whole_cycles_from(305, 305);
}

TEST_F(Host_Borders, DeviceThatIsTriggeredInMidCycleHasWholePackets) {
    select_host_mode("both");
    basestationID list[2]{};
    ASSERT_EQ(getDeviceList(list, 2), 2);
    mapBS(list[1].ID, usb_slot);
    ASSERT_EQ(openBS(usb_slot), SUCCESS);
    ASSERT_EQ(openBS(slot), SUCCESS);
    hold();
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    let_make(305);
    EXPECT_EQ(arm(usb_slot), SUCCESS);
    // From here on the borders of what is handed on are in mid-cycle.
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    let_make(200);
    npoe_adapter::current_controller()->wait_until_delivered();
    EXPECT_EQ(queued(1), 0);
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    let_make(450);
    const auto packets = read_packets(1, 20);
    ASSERT_EQ(packets.size(), 20U);
    EXPECT_GT(packets.front().apData[0][0] + 512, 305 + 100);
    for (const auto& packet : packets) {
        const int number = packet.apData[0][0] + 512;
        EXPECT_EQ(number % 12, 0);
        EXPECT_EQ(packet.lfpData[0] + 512, number / 12);
        EXPECT_EQ(sample_of(packet.timestamp[0]) + 305, static_cast<std::uint64_t>(number)) << "one clock";
    }
}

// Takes its time until it is let go.
class Slow_Listener final : public demux::I_L2_Demux_CH_Results {
public:
    void publish_ap_ch_data(std::uint16_t (&/*values*/)[demux::channel_count]) override {
        m_is_busy = true;
        m_go.wait();
    }

    void publish_lp_ch_data(std::uint16_t (&/*values*/)[demux::channel_count]) override {}

    bool is_busy() const { return m_is_busy; }

    void let_go() { m_letting_go.set_value(); }

private:
    std::atomic<bool> m_is_busy{false};
    std::promise<void> m_letting_go;
    std::shared_future<void> m_go{m_letting_go.get_future()};
};

TEST_F(Host_Borders, RunEndsWhenAllItsDataHaveComeThrough) {
    open_pxi();
    const auto slow = std::make_shared<Slow_Listener>();
    npoe_adapter::current_controller()->set_NP_aqustion_listener(slow, 3, true);
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_TRUE(wait_until([&] { return slow->is_busy(); }, patience));
    auto arming = std::async(std::launch::async, [] { return arm(slot); });
    EXPECT_EQ(arming.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout)
        << "what is still on its way would be taken for the next run's";
    slow->let_go();
    EXPECT_EQ(arming.get(), SUCCESS);
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    const auto packets = read_packets(1, 5);
    ASSERT_EQ(packets.size(), 5U);
    EXPECT_LT(sample_of(packets.front().timestamp[0]), 12U);
}

// ---- Lost data.

class Host_Losses : public Held_Box {
protected:
    static recording::Recording_Options options() {
        auto made = ramp_options();
        recording::Fault of_port;
        of_port.kind = recording::Fault_Kind::lost_row;
        of_port.stream = 1;
        of_port.position = std::uint64_t{100} * 65;
        of_port.count = std::uint64_t{5} * 65;
        recording::Fault of_inputs = of_port;
        of_inputs.stream = recording::rhd_stream;
        // Seven words a row, 20 a frame: 14 whole frames.
        of_inputs.position = 1000;
        of_inputs.count = 40;
        made.faults = {of_port, of_inputs};
        return made;
    }

    Host_Losses() : Held_Box(options()) {}
};

TEST_F(Host_Losses, LostADCFramesShowAsSoManySamplesInTheStamps) {
    open_usb();
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    const recording::RHD_Generator generator = rhd_generator();
    std::uint64_t next = 0;
    std::vector<std::uint64_t> gaps;
    for (const auto& row : read_adc(3000, 12)) {
        const std::uint64_t sample = sample_of(row.info.Timestamp);
        if (sample != next) {
            gaps.push_back(sample - next);
        }
        next = sample + 1;
        for (std::size_t input = 0; input < 8; ++input) {
            ASSERT_EQ(row.samples[input], generator.adc_input(sample, input) - 32768) << sample;
        }
    }
    EXPECT_EQ(gaps, (std::vector<std::uint64_t>{14}));
}

TEST_F(Host_Losses, EachLFPSampleComesOnceAlsoBehindAGapInMidCycle) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    const auto packets = read_packets(2, 80);
    ASSERT_EQ(packets.size(), 80U);
    EXPECT_EQ(sample_of(packets.back().timestamp[11]), 80U * 12 - 1 + 5);
    int expected = 0;
    for (const auto& packet : packets) {
        // Values that were lost with the gap are those of the LFP sample before.
        int latest = -1;
        for (int channel = 0; channel < 384; ++channel) {
            latest = std::max(latest, (packet.lfpData[channel] + 512 + 2048 - 256 - channel) % 1024);
        }
        EXPECT_EQ(latest, expected++);
    }
}

} // namespace
