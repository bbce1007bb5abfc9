// Acquisition programs on a recording that is played in real time.
#include "Host_Files.h"
#include "OE_Host.h"
#include "SG_Host.h"
#include "Wait_Until.h"

#include "Printed.h"

#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::test;
using Clock = std::chrono::steady_clock;
using Faults = std::vector<std::string>;
using Gaps = std::vector<std::uint64_t>;

constexpr std::chrono::seconds patience(60);

class Host_Simulation : public testing::Test {
protected:
    static constexpr std::uint64_t samples = 24'000;
    // The last samples of a recording do not fill what the library hands on at a time.
    static constexpr std::uint64_t all_packets = (samples - 240) / 12;

    static void play(std::vector<unsigned> ports, std::uint64_t super_frames = samples) {
        auto options = ramp_options(std::move(ports));
        options.super_frames = super_frames;
        select_recording(options);
    }

    // A whole recording has come, whole, and from its first sample on.
    template <typename Host>
    static void expect_all_of_it(Host& host) {
        EXPECT_TRUE(wait_until([&] { return host.readers().fewest_packets() >= all_packets; }, patience));
    }

    template <typename Host>
    static void expect_clean(Host& host) {
        EXPECT_EQ(host.readers().faults(), Faults{});
        for (std::size_t i = 0; i < host.ports().size(); ++i) {
            EXPECT_EQ(host.readers().port(i).gaps(), Gaps{});
            EXPECT_EQ(host.readers().port(i).first_sample(), 0U);
        }
    }
};

TEST_F(Host_Simulation, OEPluginForOneBoxRunsThreeTimes) {
    select_host_mode("usb");
    play({1, 2});
    OE_Host host(NPPlatform_USB);
    ASSERT_TRUE(host.find());
    host.open();
    EXPECT_EQ(host.ports(), (std::vector{1, 2}));
    host.configure();
    for (int run = 0; run < 3; ++run) {
        host.start();
        expect_all_of_it(host);
        host.stop();
        expect_clean(host);
        EXPECT_GT(host.readers().adc().packets(), samples - 700);
    }
    host.close();
    host.open();
    host.configure();
    host.start();
    expect_all_of_it(host);
    host.stop();
    expect_clean(host);
    host.close();
}

TEST_F(Host_Simulation, OEPluginForPXIFindsAndReadsFourPorts) {
    select_host_mode("pxi 2.0.169 3.2.191");
    play({1, 2, 3, 4});
    EXPECT_FALSE(OE_Host(NPPlatform_USB).find());
    OE_Host host(NPPlatform_PXI);
    ASSERT_TRUE(host.find());
    host.open();
    EXPECT_EQ(host.ports(), (std::vector{1, 2, 3, 4}));
    host.configure();
    host.start();
    expect_all_of_it(host);
    host.stop();
    expect_clean(host);
    host.close();
}

TEST_F(Host_Simulation, SpikeGLXReadsAndClosesAndOpensAgain) {
    select_host_mode("usb");
    play({1, 2});
    for (int run = 0; run < 2; ++run) {
        SG_Host host(NPPlatform_USB, 20 + run, run == 0 ? 12 : 24);
        ASSERT_TRUE(host.find());
        host.open();
        host.configure();
        host.start();
        expect_all_of_it(host);
        host.stop();
        expect_clean(host);
    }
}

TEST_F(Host_Simulation, OnePortIsPlayedNoFasterThanFour) {
    for (const auto& ports : {std::vector<unsigned>{3}, std::vector<unsigned>{1, 2, 3, 4}}) {
        select_host_mode("pxi 2.0.169 3.2.191");
        play(ports);
        OE_Host host(NPPlatform_PXI);
        ASSERT_TRUE(host.find());
        host.open();
        EXPECT_EQ(host.ports().size(), ports.size());
        const auto begin = Clock::now();
        host.start();
        expect_all_of_it(host);
        const std::chrono::duration<double> elapsed = Clock::now() - begin;
        host.stop();
        expect_clean(host);
        // How slow a machine is does not matter here.
        EXPECT_GT(elapsed.count(), 0.95 * static_cast<double>(all_packets * 12) / 30'000);
        host.close();
    }
}

TEST_F(Host_Simulation, EndOfTheRecordingReadsAsNothing) {
    select_host_mode("usb");
    play({1});
    OE_Host host(NPPlatform_USB);
    ASSERT_TRUE(host.find());
    host.open();
    host.start();
    expect_all_of_it(host);
    host.readers().finish();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    electrodePacket packet;
    int count = -1;
    do {
        EXPECT_EQ(readElectrodeData(host.slot(), 1, 1, &packet, &count, 1), SUCCESS);
    } while (count == 1);
    EXPECT_EQ(count, 0);
    host.stop();
    host.close();
}

TEST_F(Host_Simulation, TriggerAfterTheEndPlaysFromTheBeginning) {
    select_host_mode("usb");
    play({1}, 3000);
    ASSERT_EQ(mapBS(1, 20), SUCCESS);
    ASSERT_EQ(openBS(20), SUCCESS);
    for (int run = 0; run < 2; ++run) {
        ASSERT_EQ(setSWTrigger(20), SUCCESS);
        electrodePacket packet{};
        int count = 0;
        EXPECT_TRUE(wait_until(
            [&] { return readElectrodeData(20, 1, 1, &packet, &count, 1) == SUCCESS && count == 1; },
            patience));
        EXPECT_EQ(packet.timestamp[0], 0U) << run;
        EXPECT_TRUE(wait_until([] { return Pelgar::ORBE::npoe_adapter::g_pump_broke_off.load(); }, patience));
    }
    EXPECT_EQ(closeBS(20), SUCCESS);
}

TEST_F(Host_Simulation, PortsThatTheDeviceHasNotCostNothingToWrite) {
    constexpr std::uint64_t super_frames = 3000;
    select_host_mode("usb");
    play({1, 2, 3, 4}, super_frames);
    ASSERT_EQ(mapBS(1, 20), SUCCESS);
    const Printed printed = printed_by([] {
        ASSERT_EQ(openBS(20), SUCCESS);
        ASSERT_EQ(setSWTrigger(20), SUCCESS);
        EXPECT_TRUE(wait_until([] { return Pelgar::ORBE::npoe_adapter::g_pump_broke_off.load(); }, patience));
        EXPECT_EQ(closeBS(20), SUCCESS);
    });
    // Far less than a line a sample, of which there are four ports full.
    EXPECT_LT(occurrences(printed.out, "\n") + occurrences(printed.err, "\n"), super_frames);
}

TEST_F(Host_Simulation, EveryProbeHasItsOwnSerialNumber) {
    select_host_mode("pxi");
    play({1, 2, 3, 4});
    ASSERT_EQ(openBS(2), SUCCESS);
    std::vector<std::uint64_t> numbers;
    for (int port = 1; port <= 4; ++port) {
        HardwareID id{};
        uint64_t number = 0;
        EXPECT_EQ(getProbeHardwareID(2, port, 1, &id), SUCCESS);
        EXPECT_EQ(readProbeSN(2, port, 1, &number), SUCCESS);
        EXPECT_EQ(std::uint64_t{id.SerialNumber}, number);
        EXPECT_NE(number, 0U);
        for (const std::uint64_t other : numbers) {
            EXPECT_NE(number, other);
        }
        numbers.push_back(number);
    }
    EXPECT_EQ(closeBS(2), SUCCESS);
}

} // namespace
