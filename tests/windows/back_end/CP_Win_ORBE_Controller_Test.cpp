// Opening, registers and closing, on the stand-in driver.
#include "back_ends/CP_Win_ORBE_Controller.h"

#include "Back_End_Fixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Pelgar::ORBE::A_ORBE_Controller;
using Pelgar::ORBE::CP_Win_ORBE_Controller;
using Pelgar::ORBE::test::box_driver;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::text_thrown_by;

using CPWinORBEController = Pelgar::ORBE::test::Back_End_Fixture;

// Statuses that the driver can answer with, as the kernel numbers them.
constexpr std::uint32_t status_unsuccessful = 0xC0000001;
constexpr std::uint32_t status_not_implemented = 0xC0000002;
constexpr std::uint32_t status_access_denied = 0xC0000022;
constexpr std::uint32_t status_insufficient_resources = 0xC000009A;

TEST(CPWinORBEControllerFactory, MakesTheDriversBackEndWithItsModulesAndOpensNothing) {
    std::shared_ptr<A_ORBE_Controller> controller;
    const auto made = printed_by([&] { controller = A_ORBE_Controller::get_instance(false); });
    EXPECT_EQ(made.out, "A_ORBE_Controller ctor\n"
                        "SPI_Module ctor at base adr : 500\n"
                        "GPIO_Module ctor at base adr : 200\n"
                        "GPIO_Module ctor at base adr : 0\n"
                        "GPIO_Module ctor at base adr : 8\n"
                        "UART_Module ctor at base adr : 400\n"
                        "XADC_Module ctor at base adr : 800\n"
                        "Okelly_Adapter_Module ctor at base adr : 1000\n"
                        "AXI_Stream_Fifo_Module ctor at base adr : 1200\n"
                        "HW_ICAP_Module ctor at base adr : 1400\n"
                        "Foreign HW_ICAP_Module ctor at base adr : 400\n"
                        "GPIO_Module ctor at base adr : 1600\n");
    EXPECT_EQ(made.err, "");
    EXPECT_NE(dynamic_cast<CP_Win_ORBE_Controller*>(controller.get()), nullptr);
    const auto released = printed_by([&] { controller.reset(); });
    EXPECT_EQ(released.out, "CP_Win_ORBE_Controller dtor, closing driver connection\n"
                            "A_ORBE_Controller dtor\n");
}

TEST_F(CPWinORBEController, WithoutADeviceNothingIsOpened) {
    const auto printed = printed_by([&] { EXPECT_FALSE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 0\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(printed_by([&] { m_controller->close_driver_connection(); }).out, "");
}

TEST_F(CPWinORBEController, DeviceIsOpenedAndItsBarMapped) {
    box_driver().set_present_boxes(1);
    const auto printed = printed_by([&] { EXPECT_TRUE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n65536 sized bar mapped to user space\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPWinORBEController, OfTwoDevicesTheOneEnumeratedLastIsOpened) {
    box_driver().set_present_boxes(2);
    box_driver().write_register(0, 0x1600, 0xAAAA);
    box_driver().write_register(1, 0x1600, 0xBBBB);
    const auto printed = printed_by([&] { EXPECT_TRUE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 2\n65536 sized bar mapped to user space\n");
    EXPECT_EQ(m_controller->read_register(0x1600), 0xBBBBU);
    box_driver().set(0, BOX_READ_LIMIT, 0);
    std::uint8_t byte = 1;
    m_controller->setup_read(&byte, 1, 0, 1000);
    EXPECT_EQ(m_controller->read_stream(0, false), 1U);
    EXPECT_EQ(box_driver().get(0, BOX_READS), 0U);
    EXPECT_EQ(box_driver().get(1, BOX_READS), 1U);
}

TEST_F(CPWinORBEController, RegistersThatCannotBeOpenedAreReported) {
    box_driver().set_present_boxes(1);
    box_driver().set(0, BOX_HAS_USER_FILE, 0);
    const auto printed = printed_by([&] { EXPECT_FALSE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n");
    EXPECT_EQ(printed.err, "Error opening device, win32 error code: 2\n");
    EXPECT_TRUE(m_controller->open_failure().starts_with("win32 error code 2: \\\\?\\"));
    EXPECT_TRUE(m_controller->open_failure().ends_with("\\user"));
    EXPECT_EQ(printed_by([&] { m_controller->close_driver_connection(); }).out, "");
}

TEST_F(CPWinORBEController, StreamThatCannotBeOpenedIsReported) {
    box_driver().set_present_boxes(1);
    box_driver().set(0, BOX_HAS_STREAM_FILE, 0);
    const auto printed = printed_by([&] { EXPECT_FALSE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n");
    EXPECT_EQ(printed.err, "Error opening device, win32 error code: 2\n");
    EXPECT_TRUE(m_controller->open_failure().ends_with("\\c2h_0"));
    EXPECT_EQ(printed_by([&] { m_controller->close_driver_connection(); }).out, "Closing mm driver handle\n");
}

TEST_F(CPWinORBEController, RegistersThatCannotBeMappedThrowTheTextAdvancedByTheErrorCode) {
    struct Failure {
        std::uint32_t status;
        const char* text;
    };

    box_driver().set_present_boxes(1);
    for (const Failure& failure : {
             Failure{status_not_implemented, "ap bar ioctl failed!"},  // ERROR_INVALID_FUNCTION (1)
             Failure{status_access_denied, "ar ioctl failed!"},        // ERROR_ACCESS_DENIED (5)
             Failure{status_unsuccessful, "r mapped to user space\n"}, // ERROR_GEN_FAILURE (31)
             Failure{status_insufficient_resources, ""},               // ERROR_NO_SYSTEM_RESOURCES (1450)
         }) {
        box_driver().set(0, BOX_MAP_STATUS, failure.status);
        std::string text;
        const auto printed = printed_by([&] { text = text_thrown_by<std::runtime_error>([&] { open(); }); });
        EXPECT_EQ(text, failure.text);
        EXPECT_EQ(printed.out, "Devices found: 1\n");
        EXPECT_EQ(printed.err, "");
        EXPECT_EQ(printed_by([&] { m_controller->close_driver_connection(); }).out,
                  "Closing mm driver handle\nClosing c2h driver handle\n");
    }
}

TEST_F(CPWinORBEController, RegistersAreWordsAtByteAddresses) {
    open_box();
    m_controller->write_register(0x1054, 0x1234'5678);
    m_controller->write_register(0x1058, 0xFFFF'FFFF);
    EXPECT_EQ(box_driver().read_register(0, 0x1054), 0x1234'5678U);
    EXPECT_EQ(m_controller->read_register(0x1054), 0x1234'5678U);
    EXPECT_EQ(m_controller->read_register(0x1058), 0xFFFF'FFFFU);
    EXPECT_EQ(m_controller->read_register(0x1050), 0U);
}

TEST_F(CPWinORBEController, TwoLowBitsOfAnAddressAreDropped) {
    open_box();
    m_controller->write_register(0x1057, 9);
    EXPECT_EQ(box_driver().read_register(0, 0x1054), 9U);
    EXPECT_EQ(m_controller->read_register(0x1055), 9U);
    EXPECT_EQ(m_controller->read_register(0x1056), 9U);
    EXPECT_EQ(m_controller->read_register(0x1058), 0U);
}

TEST_F(CPWinORBEController, RegistersShowWhatTheOtherSideWrites) {
    open_box();
    EXPECT_EQ(m_controller->read_register(0x208), 0x4E50'0040U);
    box_driver().write_register(0, 0x208, 0x4E50'0020);
    EXPECT_EQ(m_controller->read_register(0x208), 0x4E50'0020U);
}

TEST_F(CPWinORBEController, BytesAreWrittenOneByOneToTheSameAddress) {
    open_box();
    const std::vector<std::uint8_t> bytes{1, 2, 0xFE};
    m_controller->write_register_bytes(0x404, 3, bytes.data());
    EXPECT_EQ(box_driver().read_register(0, 0x404), 0xFEU);
    EXPECT_EQ(box_driver().read_register(0, 0x408), 0U);
}

TEST_F(CPWinORBEController, ClosingTwiceSaysEachOfItsLinesOnce) {
    open_box();
    const auto printed = printed_by([&] {
        m_controller->close_driver_connection();
        m_controller->close_driver_connection();
    });
    EXPECT_EQ(printed.out, "Closing mm driver handle\nClosing c2h driver handle\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPWinORBEController, ConnectionCanBeOpenedAnew) {
    open_box();
    m_controller->close_driver_connection();
    const auto printed = printed_by([&] { EXPECT_TRUE(open()); });
    EXPECT_EQ(printed.out, "Devices found: 1\n65536 sized bar mapped to user space\n");
    m_controller->write_register(0x0, 5);
    EXPECT_EQ(box_driver().read_register(0, 0x0), 5U);
}

TEST_F(CPWinORBEController, OpeningAnewWithoutClosingLeavesNoHandleBehind) {
    open_box();
    EXPECT_EQ(open_files(), 2U);
    ASSERT_TRUE(open());
    EXPECT_EQ(open_files(), 2U);
    m_controller->close_driver_connection();
    EXPECT_EQ(open_files(), 0U);
}

TEST_F(CPWinORBEController, OpeningAnewWithoutTheStreamLeavesOnlyTheRegistersOpen) {
    open_box();
    box_driver().set(0, BOX_HAS_STREAM_FILE, 0);
    EXPECT_FALSE(open());
    EXPECT_EQ(open_files(), 1U);
    m_controller->close_driver_connection();
    EXPECT_EQ(open_files(), 0U);
}

TEST_F(CPWinORBEController, FilesOfABarThatCannotBeMappedAreClosedWithTheController) {
    box_driver().set_present_boxes(1);
    box_driver().set(0, BOX_MAP_STATUS, status_unsuccessful);
    EXPECT_THROW(open(), std::runtime_error);
    EXPECT_EQ(open_files(), 2U);
    EXPECT_THROW(open(), std::runtime_error);
    EXPECT_EQ(open_files(), 2U);
    m_controller.reset();
    EXPECT_EQ(open_files(), 0U);
}

TEST_F(CPWinORBEController, DestructorClosesTheConnection) {
    open_box();
    const auto printed = printed_by([&] { m_controller.reset(); });
    EXPECT_EQ(printed.out, "CP_Win_ORBE_Controller dtor, closing driver connection\n"
                           "Closing mm driver handle\n"
                           "Closing c2h driver handle\n"
                           "A_ORBE_Controller dtor\n");
}

TEST_F(CPWinORBEController, RegistersOfTheDmaEngineAreOutOfReach) {
    const auto written = printed_by([&] { m_controller->write_xdma_register(0x10, 1); });
    EXPECT_EQ(written.err, "Uimplemented function in Windows : write_xdma_register \n");
    EXPECT_EQ(written.out, "");
    const auto read = printed_by([&] { EXPECT_EQ(m_controller->read_xdma_register(0x10), 0U); });
    EXPECT_EQ(read.err, "Uimplemented function in Windows : read_xdma_register \n");
    EXPECT_EQ(read.out, "");
}

TEST_F(CPWinORBEController, NoExtendedPropertyIsKnown) {
    const auto printed =
        printed_by([&] { EXPECT_FALSE(m_controller->set_extended_property(16, 4'000'000'000)); });
    EXPECT_EQ(printed.out, "CP_Win_ORBE_Controller::set_extended_property 16 : 4000000000\n");
    EXPECT_EQ(printed.err, "");
}

} // namespace
