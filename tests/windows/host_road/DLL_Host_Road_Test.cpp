// A host's run in hardware mode through the shipped DLL, on the stand-in driver.
#include "Box_Environment.h"
#include "Host_Road.h"
#include "Host_Road_Expectation.h"
#include "Host_Road_Files.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using namespace Pelgar::ORBE::host;
using Pelgar::ORBE::test::box_driver;

// Statuses that the driver can answer with, as the kernel numbers them.
constexpr std::uint32_t status_unsuccessful = 0xC0000001;
constexpr std::uint32_t status_io_device_error = 0xC0000185;

constexpr Host_Road_Result not_opened{ROAD_NOT_OPENED, 0, 0, 0};
constexpr int slot = 0;

class DLLHostRoad : public Pelgar::ORBE::test::Box_Fixture {
protected:
    ~DLLHostRoad() override { Neuropixels::closeBS(slot); }

    void connect_box() const {
        box_driver().set_present_boxes(1);
        box_driver().play(0, m_files.recording());
    }

    // The library's handles to the box's files.
    static std::uint64_t open_files() { return box_driver().get(0, BOX_OPEN_FILES); }

    static std::uint32_t configuration() { return box_driver().read_register(0, 0x0000); }

    Host_Road_Files m_files;
};

TEST_F(DLLHostRoad, StreamsFromTheDriver) {
    connect_box();
    EXPECT_EQ(m_files.run(END_BY_STOPPING), Host_Road_Result{});
    EXPECT_EQ(configuration(), 0U) << "closing must take the power from the ports";
    EXPECT_EQ(box_driver().read_register(0, 0x1054), 0x1234'5678U) << "starting sets the TTL outputs";
}

TEST_F(DLLHostRoad, ShortReadsMakeNoDifference) {
    connect_box();
    box_driver().set(0, BOX_READ_LIMIT, 100'000);
    EXPECT_EQ(m_files.run(END_BY_STOPPING), Host_Road_Result{});
}

TEST_F(DLLHostRoad, EveryRunStartsAnew) {
    connect_box();
    EXPECT_EQ(m_files.run(END_BY_STOPPING), Host_Road_Result{});
    box_driver().play(0, m_files.recording());
    EXPECT_EQ(m_files.run(END_BY_STOPPING), Host_Road_Result{});
}

TEST_F(DLLHostRoad, WithoutABoxThereIsNothingToOpen) {
    EXPECT_EQ(m_files.run(END_BY_STOPPING), not_opened);
}

TEST_F(DLLHostRoad, DeviceFilesThatDoNotOpenFailTheOpening) {
    connect_box();
    box_driver().set(0, BOX_HAS_USER_FILE, 0);
    EXPECT_EQ(m_files.run(END_BY_STOPPING), not_opened);
    box_driver().set(0, BOX_HAS_USER_FILE, 1);
    box_driver().set(0, BOX_HAS_STREAM_FILE, 0);
    EXPECT_EQ(m_files.run(END_BY_STOPPING), not_opened);
}

TEST_F(DLLHostRoad, BarThatCannotBeMappedFailsTheOpening) {
    connect_box();
    box_driver().set(0, BOX_MAP_STATUS, status_unsuccessful);
    EXPECT_EQ(m_files.run(END_BY_STOPPING), not_opened);
}

TEST_F(DLLHostRoad, OpeningTwiceHoldsEachFileOnceAndClosingNone) {
    connect_box();
    ASSERT_EQ(Neuropixels::openBS(slot), Neuropixels::SUCCESS);
    EXPECT_EQ(open_files(), 2U);
    ASSERT_EQ(Neuropixels::openBS(slot), Neuropixels::SUCCESS);
    EXPECT_EQ(open_files(), 2U);
    ASSERT_EQ(Neuropixels::closeBS(slot), Neuropixels::SUCCESS);
    EXPECT_EQ(open_files(), 0U);
}

TEST_F(DLLHostRoad, FailedOpeningsLeaveNoFileOpenOnceTheyAreClosed) {
    connect_box();
    box_driver().set(0, BOX_HAS_STREAM_FILE, 0);
    EXPECT_EQ(Neuropixels::openBS(slot), 5);
    EXPECT_EQ(open_files(), 1U);
    Neuropixels::closeBS(slot);
    EXPECT_EQ(open_files(), 0U);
    box_driver().set(0, BOX_HAS_STREAM_FILE, 1);
    box_driver().set(0, BOX_MAP_STATUS, status_unsuccessful);
    EXPECT_EQ(Neuropixels::openBS(slot), 5);
    EXPECT_EQ(open_files(), 2U);
    Neuropixels::closeBS(slot);
    EXPECT_EQ(open_files(), 0U);
}

TEST_F(DLLHostRoad, IdentityOfTheDesignComesFromTheRegisters) {
    connect_box();
    box_driver().write_register(0, 0x0208, 0x4E50'0020);
    box_driver().write_register(0, 0x0200, 0xE);
    ASSERT_EQ(Neuropixels::openBS(slot), Neuropixels::SUCCESS);
    EXPECT_EQ(Neuropixels::bs_get_fpga_design_label(), "4e500020");
    EXPECT_EQ(Neuropixels::bs_get_fpga_design_build_date(), "19-04-2024");
    std::uint8_t ports = 0;
    EXPECT_EQ(Neuropixels::get_available_port_capability(slot, &ports), Neuropixels::SUCCESS);
    EXPECT_EQ(ports, 2);
    for (const int port : {1, 2, 3}) {
        bool detected = false;
        EXPECT_EQ(Neuropixels::detectHeadStage(slot, port, &detected), Neuropixels::SUCCESS);
        EXPECT_EQ(detected, port == 2) << port;
    }
}

TEST_F(DLLHostRoad, PortsThatDoNotLockFailTheOpening) {
    connect_box();
    box_driver().write_register(0, 0x0200, 0);
    EXPECT_EQ(m_files.run(END_BY_STOPPING), not_opened);
}

TEST_F(DLLHostRoad, FailedReadLeavesTheBoxAloneUntilItIsOpenedAgain) {
    connect_box();
    box_driver().set(0, BOX_READ_STATUS, status_io_device_error);
    ASSERT_EQ(Neuropixels::openBS(slot), Neuropixels::SUCCESS);
    ASSERT_EQ(Neuropixels::start_acquisition(slot, 1), Neuropixels::SUCCESS);
    while (box_driver().get(0, BOX_READS) == 0) {
    }
    EXPECT_EQ(Neuropixels::closeBS(slot), Neuropixels::SUCCESS);
    EXPECT_EQ(box_driver().get(0, BOX_READS), 1U) << "a pump whose read fails must not read on";

    box_driver().set(0, BOX_READ_STATUS, 0);
    EXPECT_EQ(m_files.run(END_BY_STOPPING), Host_Road_Result{});
}

} // namespace
