// An acquisition program's runs on the back-end of the Linux driver.
#include "Driver_Run.h"
#include "Host_Files.h"

#include "Folder_Controller.h"
#include "Stand_In_Devices.h"
#include "Waiter_Guard.h"

#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

constexpr const char* folder = "devices";

TEST(Host_On_Devices, ReadsEveryPacketRunAfterRunAndStopsWhereverItIs) {
    const Waiter_Guard waiter;
    std::filesystem::create_directory(folder);
    *npoe_adapter::g_controller_factory = [](bool simulation) {
        EXPECT_FALSE(simulation);
        return std::make_shared<ORBE_Controller_Library>(std::make_shared<Folder_Controller>(folder),
                                                         simulation);
    };
    Stand_In_Devices devices(folder);
    const auto recording = write_recording(driver_run_options());
    run_on_driver([&] { devices.play(recording); });
    *npoe_adapter::g_controller_factory = {};
}

} // namespace
