// An acquisition program's runs through the shipped DLL, on the stand-in driver.
#include "Box_Environment.h"
#include "Driver_Run.h"
#include "Host_Files.h"

#include <NeuropixAPI.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using Pelgar::ORBE::test::box_driver;

class DLLHostMode : public Pelgar::ORBE::test::Box_Fixture {
protected:
    // Other tests of the process know nothing of the host mode.
    ~DLLHostMode() override {
        Neuropixels::closeBS(2);
        Neuropixels::closeBS(20);
        std::filesystem::remove("ORBE_HOST_MODE");
    }
};

TEST_F(DLLHostMode, ReadsEveryPacketRunAfterRunAndStopsWhereverItIs) {
    const auto recording = Pelgar::ORBE::test::write_recording(Pelgar::ORBE::test::driver_run_options());
    box_driver().set_present_boxes(1);
    Pelgar::ORBE::test::run_on_driver([&] { box_driver().play(0, recording); });
    EXPECT_EQ(box_driver().get(0, BOX_OPEN_FILES), 0U);
}

} // namespace
