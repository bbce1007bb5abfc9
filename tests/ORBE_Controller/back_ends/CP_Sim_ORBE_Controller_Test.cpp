#include "back_ends/CP_Sim_ORBE_Controller.h"

#include "Printed.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>

namespace {

using Pelgar::ORBE::A_ORBE_Controller;
using Pelgar::ORBE::test::printed_by;

class CPSimORBEController : public testing::Test {
protected:
    std::shared_ptr<A_ORBE_Controller> m_controller = A_ORBE_Controller::get_instance(true);
};

TEST_F(CPSimORBEController, WriteIsPrintedInHexadecimalAndNotStored) {
    const auto printed = printed_by([&] { m_controller->write_register(0x1054, 0x1234'ABCD); });
    EXPECT_EQ(printed.out, "CP_Sim_MemMapped_AXI write_register. 1054:1234abcd\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(m_controller->read_register(0x1054), 0xC3U);
}

TEST_F(CPSimORBEController, ReadsAnswerAsAUartThatAlwaysHoldsAnAcknowledge) {
    const auto printed = printed_by([&] {
        EXPECT_EQ(m_controller->read_register(0x8), 1U);
        EXPECT_EQ(m_controller->read_register(0x0), 0xC3U);
    });
    EXPECT_EQ(printed.out, "");
}

TEST_F(CPSimORBEController, OtherReadsArePrintedInHexadecimal) {
    const auto printed = printed_by([&] {
        EXPECT_EQ(m_controller->read_register(0x1004), 0xC3U);
        EXPECT_EQ(m_controller->read_register(0xAB), 0xC3U);
    });
    EXPECT_EQ(printed.out, "CP_Sim_MemMapped_AXI read_register. 1004\n"
                           "CP_Sim_MemMapped_AXI read_register. ab\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPSimORBEController, HexadecimalDoesNotStayOn) {
    const auto printed = printed_by([&] {
        m_controller->write_register(0x10, 0x10);
        m_controller->set_extended_property(16, 17);
    });
    EXPECT_EQ(printed.out, "CP_Sim_MemMapped_AXI write_register. 10:10\n"
                           "CP_Sim_ORBE_Controller::set_extended_property 16 : 17\n");
}

TEST_F(CPSimORBEController, BytesGoNowhere) {
    const std::array<std::uint8_t, 2> bytes{1, 2};
    const auto printed = printed_by([&] { m_controller->write_register_bytes(0x404, 2, bytes.data()); });
    EXPECT_EQ(printed.out, "");
}

TEST_F(CPSimORBEController, OpeningMovesTheUartToAddressZero) {
    const auto printed =
        printed_by([&] { EXPECT_TRUE(m_controller->open_driver_connection("ORBE_Dext_Driver", true)); });
    EXPECT_EQ(printed.out, "UART_Module ctor at base adr : 0\n");
    EXPECT_EQ(m_controller->uart().base_address(), 0x0U);
}

TEST_F(CPSimORBEController, OpenedUartAcknowledgesEverything) {
    m_controller->open_driver_connection("ORBE_Dext_Driver", true);
    std::array<std::uint8_t, 3> received{};
    const std::array<std::uint8_t, 4> sent{0x79, 1, 2, 3};
    m_controller->uart().send(sent.data(), 4);
    const auto printed = printed_by([&] {
        m_controller->uart().send(sent.data(), 4);
        m_controller->uart().receive(received.data(), 3, 10);
    });
    EXPECT_EQ(received, (std::array<std::uint8_t, 3>{0xC3, 0xC3, 0xC3}));
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPSimORBEController, ClosingSaysSoEveryTime) {
    const auto printed = printed_by([&] {
        m_controller->close_driver_connection();
        m_controller->close_driver_connection();
    });
    EXPECT_EQ(printed.out, "CP_Sim_ORBE_Controller::close_driver_connection\n"
                           "CP_Sim_ORBE_Controller::close_driver_connection\n");
}

TEST_F(CPSimORBEController, EveryExtendedPropertyIsAccepted) {
    const auto printed =
        printed_by([&] { EXPECT_TRUE(m_controller->set_extended_property(3, 4'000'000'000)); });
    EXPECT_EQ(printed.out, "CP_Sim_ORBE_Controller::set_extended_property 3 : 4000000000\n");
}

TEST_F(CPSimORBEController, StreamIsSilent) {
    std::array<std::uint8_t, 16> buffer{};
    const auto printed = printed_by([&] {
        EXPECT_FALSE(m_controller->setup_read(buffer.data(), 16, 0, 1000));
        EXPECT_EQ(m_controller->read_stream(0, true), 0U);
        EXPECT_EQ(m_controller->read_stream(0, false), 0U);
    });
    EXPECT_EQ(printed.out, "");
}

TEST_F(CPSimORBEController, RegistersOfTheDmaEngineDoNothing) {
    const auto printed = printed_by([&] {
        m_controller->write_xdma_register(0x10, 1);
        EXPECT_EQ(m_controller->read_xdma_register(0x10), 0U);
    });
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "");
}

TEST_F(CPSimORBEController, DestructorClosesTheConnection) {
    const auto printed = printed_by([&] { m_controller.reset(); });
    EXPECT_EQ(printed.out, "CP_Sim_ORBE_Controller dtor, closing driver connection\n"
                           "CP_Sim_ORBE_Controller::close_driver_connection\n"
                           "A_ORBE_Controller dtor\n");
    EXPECT_EQ(printed.err, "");
}

} // namespace
