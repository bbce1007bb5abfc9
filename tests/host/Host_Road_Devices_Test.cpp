// A host's run in hardware mode, on the back-end of the Linux driver.
#include "Folder_Controller.h"
#include "Host_Road.h"
#include "Host_Road_Files.h"
#include "Stand_In_Devices.h"
#include "Waiter_Guard.h"
#include "adapter/Adapter_State.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::host;
using Pelgar::ORBE::npoe_adapter::g_controller_factory;
using Pelgar::ORBE::test::Folder_Controller;
using Pelgar::ORBE::test::Stand_In_Devices;
using Pelgar::ORBE::test::Waiter_Guard;

class HostRoadOnDevices : public testing::Test {
protected:
    HostRoadOnDevices() {
        *g_controller_factory = [](bool simulation) {
            EXPECT_FALSE(simulation);
            return std::make_shared<ORBE_Controller_Library>(std::make_shared<Folder_Controller>(folder),
                                                             simulation);
        };
        std::filesystem::create_directory(folder);
    }

    ~HostRoadOnDevices() override { *g_controller_factory = {}; }

    static constexpr const char* folder = "devices";

    Host_Road_Files m_files;
    Waiter_Guard m_waiter;
};

TEST_F(HostRoadOnDevices, StreamsFromTheDriver) {
    Stand_In_Devices devices(folder);
    devices.play(m_files.recording());
    EXPECT_EQ(m_files.run(END_BY_STOPPING), Host_Road_Result{});
}

TEST_F(HostRoadOnDevices, TellsThatThereIsNoBox) {
    EXPECT_EQ(m_files.run(END_BY_STOPPING), (Host_Road_Result{ROAD_NOT_OPENED, 0, 0, 0}));
}

} // namespace
