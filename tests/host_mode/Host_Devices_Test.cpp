// An acquisition program's run on the back-end of the Linux driver.
#include "Host_Files.h"
#include "Port_Check.h"

#include "Folder_Controller.h"
#include "Stand_In_Devices.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

constexpr const char* folder = "devices";

TEST(Host_On_Devices, ReadsEveryPacketOfTheStreamAndStops) {
    constexpr int slot = 2;
    constexpr std::uint64_t super_frames = 9000;
    select_host_mode("pxi");
    auto options = ramp_options();
    options.super_frames = super_frames;
    select_recording(options);
    std::filesystem::remove("ORBE_DFGMZ_ADAPTER_SIM");
    std::filesystem::create_directory(folder);
    *npoe_adapter::g_controller_factory = [](bool simulation) {
        EXPECT_FALSE(simulation);
        return std::make_shared<ORBE_Controller_Library>(std::make_shared<Folder_Controller>(folder),
                                                         simulation);
    };
    Stand_In_Devices devices(folder);
    devices.play("host_recording.bin");
    ASSERT_EQ(openBS(slot), SUCCESS);
    ASSERT_EQ(setSWTrigger(slot), SUCCESS);
    std::deque<Port_Check> checks;
    const auto last = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (int port = 1; port <= 4; ++port) {
        Port_Check& check = checks.emplace_back(port);
        while (check.packets() < super_frames / 12 - 60 && std::chrono::steady_clock::now() < last) {
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
        EXPECT_GE(check.packets(), super_frames / 12 - 60) << "port " << port;
    }
    EXPECT_EQ(arm(slot), SUCCESS);
    EXPECT_EQ(closeBS(slot), SUCCESS);
    *npoe_adapter::g_controller_factory = {};
}

} // namespace
