// Failed links, failed reads, openings that fail and closings: what is left of a run, and that the next one
// begins anew. On the virtual box.
#include "Held_Box.h"
#include "Port_Check.h"

#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using npoe_adapter::current_controller;

constexpr std::size_t failing_port = 1;

class Host_Faults : public Held_Box {
protected:
    // A call that finds nobody at the other end of the link.
    void fail_link() {
        m_box->headstage(failing_port).fail_from(1, Link_Fault::silence);
        EXPECT_NE(writeProbeConfiguration(slot, static_cast<int>(failing_port) + 1, 1, false), SUCCESS);
        EXPECT_EQ(current_controller()->get_current_error_level(), Error_Level::probe_link);
    }

    void fail_next_read() {
        m_box->stream().fail_read(m_box->stream().reads() + 1, {DMA_Read_Fault::Kind::fails, 0});
        EXPECT_TRUE(wait_until(
            [] { return current_controller()->get_current_error_level() == Error_Level::dma_pump; },
            patience));
    }

    void lock_ports(std::optional<std::size_t> look) {
        for (std::size_t port = 0; port < box_port_count; ++port) {
            m_box->lock_at_look(port, look);
        }
    }

    static std::uint32_t stamp_of_first_packet(int port = 1) {
        const auto packets = read_packets(port, 1);
        return packets.empty() ? 0xFFFF'FFFFU : packets.front().timestamp[0];
    }

    void expect_run_that_begins_anew() {
        EXPECT_EQ(setSWTrigger(slot), SUCCESS);
        EXPECT_EQ(sending_ports(), 0xFU);
        for (int port = 1; port <= 4; ++port) {
            EXPECT_LT(stamp_of_first_packet(port), 40U) << "port " << port;
        }
    }

    void open_both() {
        select_host_mode("both");
        basestationID list[2]{};
        ASSERT_EQ(getDeviceList(list, 2), 2);
        mapBS(list[1].ID, usb_slot);
        ASSERT_EQ(openBS(slot), SUCCESS);
        m_clock.emplace(m_box->stream());
    }
};

// ---- Links.

TEST_F(Host_Faults, PortsAreSwitchedOffWhenARunEndsAfterALinkHasFailed) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_EQ(read_packets(1, 20).size(), 20U);
    fail_link();
    EXPECT_EQ(read_packets(1, 20).size(), 20U) << "the others go on";
    EXPECT_EQ(arm(slot), SUCCESS);
    EXPECT_EQ(sending_ports(), 0U);
    expect_run_that_begins_anew();
}

TEST_F(Host_Faults, SecondDeviceIsOpenedBesideARunAfterALinkHasFailed) {
    open_both();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    Port_Check check(1);
    for (const auto& packet : read_packets(1, 20)) {
        check.take(packet);
    }
    fail_link();
    EXPECT_EQ(openBS(usb_slot), SUCCESS);
    for (const auto& packet : read_packets(1, 50)) {
        check.take(packet);
    }
    EXPECT_EQ(check.packets(), 70U);
    EXPECT_EQ(check.gaps(), std::vector<std::uint64_t>{});
    EXPECT_EQ(check.faults(), std::vector<std::string>{});
}

// ---- Reads.

TEST_F(Host_Faults, PortsAreSwitchedOffWhenARunEndsAfterAReadHasFailed) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_EQ(read_packets(1, 20).size(), 20U);
    fail_next_read();
    EXPECT_EQ(arm(slot), SUCCESS);
    EXPECT_EQ(sending_ports(), 0U);
    expect_run_that_begins_anew();
}

TEST_F(Host_Faults, TriggerAfterAFailedReadBeginsAnew) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_EQ(read_packets(1, 20).size(), 20U);
    fail_next_read();
    EXPECT_TRUE(wait_until([] { return npoe_adapter::g_pump_broke_off.load(); }, patience));
    expect_run_that_begins_anew();
}

// ---- Openings.

TEST_F(Host_Faults, NothingIsTriggeredAfterAFailedReopening) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_EQ(read_packets(1, 20).size(), 20U);
    fail_next_read();
    lock_ports(std::nullopt);
    EXPECT_EQ(openBS(slot), VERSION_MISMATCH);
    EXPECT_EQ(setSWTrigger(slot), NOT_OPEN);
    EXPECT_EQ(read_now(1), 0);
    EXPECT_EQ(openBS(slot), VERSION_MISMATCH) << "nothing is open that could stay so";
    lock_ports(1);
    EXPECT_EQ(openBS(slot), SUCCESS);
    expect_run_that_begins_anew();
}

TEST_F(Host_Faults, ClosingAfterAFailedOpeningReleasesTheBox) {
    lock_ports(std::nullopt);
    select_host_mode("pxi");
    EXPECT_EQ(openBS(slot), VERSION_MISMATCH);
    ASSERT_NE(current_controller(), nullptr);
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(current_controller(), nullptr);
}

TEST_F(Host_Faults, BoxIsItselfInBetweenAndTheHostsAgain) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_EQ(read_packets(1, 5).size(), 5U);
    std::filesystem::remove("ORBE_HOST_MODE");
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(detectBS(slot, nullptr), NOTSUPPORTED) << "the box itself";
    select_host_mode("pxi 2.0.169 3.2.191");
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(detectBS(slot, nullptr), SUCCESS);
    expect_run_that_begins_anew();
}

// ---- Closings.

TEST_F(Host_Faults, ClosingEndsTheRunAndTheNextOneBeginsAnew) {
    open_pxi();
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    wait_for_queue(1, 20);
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(queued(1), 0);
    EXPECT_EQ(read_now(1), 0);
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(queued(1), 0);
    EXPECT_EQ(read_now(1), 0) << "not triggered yet";
    expect_run_that_begins_anew();
}

TEST_F(Host_Faults, ClosingOneOfTwoDevicesEndsItsRunAlone) {
    open_both();
    ASSERT_EQ(openBS(usb_slot), SUCCESS);
    EXPECT_EQ(setSWTrigger(usb_slot), SUCCESS);
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    wait_for_queue(1, 20);
    EXPECT_EQ(closeBS(slot), SUCCESS);
    EXPECT_EQ(queued(1), 0);
    EXPECT_EQ(read_now(1), 0);
    EXPECT_EQ(setSWTrigger(slot), NOT_OPEN);
    std::uint64_t next = 0;
    for (const auto& row : read_adc(3000, 12)) {
        ASSERT_EQ(sample_of(row.info.Timestamp), next++) << "the other one goes on";
    }
    EXPECT_EQ(next, 3000U);
    EXPECT_EQ(openBS(slot), SUCCESS);
    EXPECT_EQ(read_now(1), 0) << "not triggered yet";
    EXPECT_EQ(setSWTrigger(slot), SUCCESS);
    EXPECT_GT(sample_of(stamp_of_first_packet()), 20U * 12) << "counted with the other one's";
}

} // namespace
