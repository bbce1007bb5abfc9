// Acquisition programs on the virtual box.
#include "Box_Clock.h"
#include "Host_Call.h"
#include "Host_Files.h"
#include "Killed_Reader.h"
#include "OE_Host.h"
#include "SG_Host.h"
#include "Wait_Until.h"

#include "Log_Capture.h"
#include "Virtual_Box_Controller.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Clock = std::chrono::steady_clock;
using Faults = std::vector<std::string>;
using Gaps = std::vector<std::uint64_t>;

constexpr std::chrono::seconds patience(120);

class Host_Box : public testing::Test {
protected:
    explicit Host_Box(recording::Recording_Options options = ramp_options())
        : m_box(std::make_shared<Virtual_Box>(std::move(options))) {
        *npoe_adapter::g_controller_factory = [box = m_box](bool) {
            return std::make_shared<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(box),
                                                             false);
        };
        loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    }

    ~Host_Box() override {
        m_box->stream().set_limit(DMA_Source::unlimited);
        closeBS(2);
        closeBS(20);
        *npoe_adapter::g_controller_factory = {};
    }

    template <typename Host>
    static void expect_clean(Host& host) {
        EXPECT_EQ(host.readers().faults(), Faults{});
        for (std::size_t i = 0; i < host.ports().size(); ++i) {
            EXPECT_EQ(host.readers().port(i).gaps(), Gaps{}) << "port " << host.ports()[i];
        }
    }

    template <typename Host>
    static void expect_packets(Host& host, std::uint64_t packets) {
        EXPECT_TRUE(wait_until([&] { return host.readers().fewest_packets() >= packets; }, patience));
    }

    Log_Capture m_log;
    std::shared_ptr<Virtual_Box> m_box;
};

TEST_F(Host_Box, OEPluginForPXIRunsThreeTimesAndAgainAfterClosing) {
    select_host_mode("pxi 2.0.169 3.2.191");
    OE_Host host(NPPlatform_PXI);
    ASSERT_TRUE(host.find());
    for (int opening = 0; opening < 2; ++opening) {
        host.open();
        EXPECT_EQ(host.ports(), (std::vector{1, 2, 3, 4}));
        host.configure();
        for (int run = 0; run < 3; ++run) {
            const Box_Clock clock(m_box->stream());
            host.start();
            expect_packets(host, 300);
            host.stop();
            expect_clean(host);
        }
        host.close();
    }
}

TEST_F(Host_Box, OEPluginForOneBoxHasTwoPortsAndTheADCInputs) {
    select_host_mode("usb");
    OE_Host host(NPPlatform_USB);
    ASSERT_TRUE(host.find());
    host.open();
    EXPECT_EQ(host.ports(), (std::vector{1, 2}));
    host.configure();
    const Box_Clock clock(m_box->stream());
    for (int run = 0; run < 3; ++run) {
        host.start();
        expect_packets(host, 300);
        host.stop();
        expect_clean(host);
        EXPECT_GT(host.readers().adc().packets(), 3000U);
    }
    host.close();
}

TEST_F(Host_Box, SpikeGLXChangesSettingsWhileDataStream) {
    select_host_mode("usb");
    for (int run = 0; run < 2; ++run) {
        SG_Host host(NPPlatform_USB, 20);
        ASSERT_TRUE(host.find());
        host.open();
        host.configure();
        const Box_Clock clock(m_box->stream());
        host.start();
        expect_packets(host, 100);
        host.change_settings();
        expect_packets(host, host.readers().fewest_packets() + 200);
        host.stop();
        expect_clean(host);
    }
}

TEST_F(Host_Box, SpikeGLXOnPXI) {
    select_host_mode("pxi");
    SG_Host host(NPPlatform_PXI, 2);
    host.set_ports({1, 2, 3, 4});
    ASSERT_TRUE(host.find());
    host.open();
    host.configure();
    const Box_Clock clock(m_box->stream());
    host.start();
    expect_packets(host, 500);
    host.stop();
    expect_clean(host);
}

TEST_F(Host_Box, BothDevicesStartAndStopByThemselves) {
    select_host_mode("both");
    SG_Host probes(NPPlatform_PXI, 2);
    SG_Host inputs(NPPlatform_USB, 20, 24);
    probes.set_ports({1, 2, 3, 4});
    inputs.set_ports({});
    ASSERT_TRUE(probes.find());
    ASSERT_TRUE(inputs.find());
    probes.open();
    inputs.open();
    probes.configure();
    inputs.configure();
    const Box_Clock clock(m_box->stream());
    probes.start();
    expect_packets(probes, 200);
    inputs.start();
    EXPECT_TRUE(wait_until([&] { return inputs.readers().adc_packets() > 3000; }, patience));
    inputs.stop();
    EXPECT_EQ(inputs.readers().faults(), Faults{});
    EXPECT_GT(inputs.readers().adc().last_sample(), 200U * 12) << "one clock for both devices";
    expect_packets(probes, probes.readers().fewest_packets() + 200);
    probes.stop();
    expect_clean(probes);
}

TEST_F(Host_Box, RandomStopsLoseNothingOfTheNextRun) {
    select_host_mode("pxi 2.0.169 3.2.191");
    OE_Host host(NPPlatform_PXI);
    ASSERT_TRUE(host.find());
    host.open();
    const Box_Clock clock(m_box->stream());
    std::mt19937 random(5);
    for (int run = 0; run < 12; ++run) {
        host.start();
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 120));
        host.stop();
        expect_clean(host);
    }
    host.start();
    expect_packets(host, 100);
    host.stop();
    expect_clean(host);
    host.close();
}

#if !defined(ORBE_SANITIZED)
TEST_F(Host_Box, ReaderThatIsKilledInAReadLeavesNothingLocked) {
    select_host_mode("pxi 2.0.169 3.2.191");
    OE_Host host(NPPlatform_PXI);
    ASSERT_TRUE(host.find());
    host.open();
    const Box_Clock clock(m_box->stream());
    for (int run = 0; run < 10; ++run) {
        HOST_MUST(arm(host.slot()));
        HOST_MUST(setSWTrigger(host.slot()));
        {
            const Killed_Reader reader(host.slot());
            std::this_thread::sleep_for(std::chrono::milliseconds(30 + run));
        }
        HOST_MUST(arm(host.slot()));
    }
    host.start();
    expect_packets(host, 200);
    host.stop();
    expect_clean(host);
    host.close();
}
#endif

// Whole super frames that port 2 loses, and where.
class Host_Gaps : public Host_Box {
protected:
    static constexpr std::uint64_t rows_per_super_frame = 65;

    static recording::Fault lost(std::uint64_t super_frame, std::uint64_t count) {
        recording::Fault fault;
        fault.kind = recording::Fault_Kind::lost_row;
        fault.stream = 1;
        fault.position = super_frame * rows_per_super_frame;
        fault.count = count * rows_per_super_frame;
        return fault;
    }

    static recording::Recording_Options options() {
        auto made = ramp_options();
        made.faults = {lost(1000, 1), lost(2000, 12), lost(3005, 37), lost(4011, 5), lost(5003, 1000)};
        return made;
    }

    Host_Gaps() : Host_Box(options()) {}
};

TEST_F(Host_Gaps, LostSuperFramesShowAsSoManySamplesInTheirPortAndInNoOther) {
    select_host_mode("pxi 2.0.169 3.2.191");
    OE_Host host(NPPlatform_PXI);
    ASSERT_TRUE(host.find());
    host.open();
    const Box_Clock clock(m_box->stream());
    host.start();
    expect_packets(host, 7000 / 12);
    host.stop();
    EXPECT_EQ(host.readers().faults(), Faults{});
    for (std::size_t port = 0; port < 4; ++port) {
        EXPECT_EQ(host.readers().port(port).gaps(), port == 1 ? (Gaps{1, 12, 37, 5, 1000}) : Gaps{});
    }
    host.close();
}

// Memory that the process has taken, in bytes, where the system tells; 0 elsewhere.
std::uint64_t resident_bytes() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * 4096;
}

TEST_F(Host_Box, LongRunOfFourPortsAndTheADCInputsLosesNothing) {
    constexpr std::uint64_t seconds = ORBE_HOST_ROAD_SECONDS;
    select_host_mode("both");
    SG_Host probes(NPPlatform_PXI, 2);
    SG_Host inputs(NPPlatform_USB, 20, 24);
    probes.set_ports({1, 2, 3, 4});
    inputs.set_ports({});
    ASSERT_TRUE(probes.find() && inputs.find());
    probes.open();
    inputs.open();
    probes.configure();
    inputs.configure();
    const Box_Clock clock(m_box->stream());
    const auto begin = Clock::now();
    probes.start();
    inputs.start();
    std::uint64_t first_resident = 0;
    std::uint64_t most_resident = 0;
    const std::uint64_t due = seconds * Box_Clock::ticks_per_second / 12;
    EXPECT_TRUE(wait_until([&] { return probes.readers().fewest_packets() >= due / 10; }, patience));
    first_resident = resident_bytes();
    const auto last = Clock::now() + std::chrono::seconds(5 * seconds + 60);
    while (probes.readers().fewest_packets() < due && Clock::now() < last) {
        most_resident = std::max(most_resident, resident_bytes());
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const std::chrono::duration<double> elapsed = Clock::now() - begin;
    inputs.stop();
    probes.stop();
    expect_clean(probes);
    EXPECT_EQ(inputs.readers().faults(), Faults{});
    EXPECT_GE(probes.readers().fewest_packets(), due);
    EXPECT_GE(inputs.readers().adc().packets() + 12'000, seconds * Box_Clock::ticks_per_second);
#if !defined(ORBE_SANITIZED)
    EXPECT_LE(most_resident, first_resident + (std::uint64_t{32} << 20U)) << "memory is flat";
#endif
    std::printf(
        "%llu s of data in %.1f s, %llu packets of each port, %llu ADC packets, memory %llu to %llu MiB\n",
        static_cast<unsigned long long>(seconds), elapsed.count(),
        static_cast<unsigned long long>(probes.readers().fewest_packets()),
        static_cast<unsigned long long>(inputs.readers().adc().packets()),
        static_cast<unsigned long long>(first_resident >> 20U),
        static_cast<unsigned long long>(most_resident >> 20U));
}

} // namespace
