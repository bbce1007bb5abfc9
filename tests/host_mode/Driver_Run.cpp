#include "Driver_Run.h"

#include "Host_Files.h"
#include "Port_Check.h"

#include <NeuropixAPI.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

namespace {

using namespace Neuropixels;

constexpr int slot = 2;
constexpr std::uint64_t super_frames = 9000;
// What stays behind in buffers that the stream's end does not fill.
constexpr std::uint64_t least_packets = super_frames / 12 - 60;
constexpr auto patience = std::chrono::seconds(60);

void read_port(int port) {
    Port_Check check(port);
    const auto last = std::chrono::steady_clock::now() + patience;
    while (check.packets() < least_packets && std::chrono::steady_clock::now() < last) {
        electrodePacket packet;
        int count = 0;
        ASSERT_EQ(readElectrodeData(slot, port, 1, &packet, &count, 1), SUCCESS);
        if (count == 1) {
            check.take(packet);
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    EXPECT_EQ(check.faults(), std::vector<std::string>{});
    EXPECT_EQ(check.gaps(), std::vector<std::uint64_t>{});
    EXPECT_GE(check.packets(), least_packets) << "port " << port;
}

} // namespace

recording::Recording_Options driver_run_options() {
    auto options = ramp_options();
    options.super_frames = super_frames;
    return options;
}

void run_on_driver() {
    select_host_mode("pxi");
    ASSERT_EQ(openBS(slot), SUCCESS);
    ASSERT_EQ(setSWTrigger(slot), SUCCESS);
    for (int port = 1; port <= 4; ++port) {
        read_port(port);
    }
    EXPECT_EQ(arm(slot), SUCCESS);
    EXPECT_EQ(closeBS(slot), SUCCESS);
}

} // namespace Pelgar::ORBE::test
