// The register space of the box and the blocks behind it, with the library's own modules on top.
#include "Virtual_Box_Controller.h"

#include "Printed.h"
#include "Waiter_Guard.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Bytes = std::vector<std::uint8_t>;
using Accesses = std::vector<Register_Access>;

class Box : public testing::Test {
protected:
    static constexpr std::uint32_t power = 0x100;
    static constexpr std::uint32_t power_and_port_4 = 0x500;

    Box() { EXPECT_TRUE(m_controller.open_driver_connection("box", true)); }

    void power_up() { m_controller.write_register(Virtual_Box::configuration, power_and_port_4); }

    Bytes ask(const Bytes& frame, std::uint32_t count) {
        Bytes answer(count);
        m_controller.uart().send(frame.data(), static_cast<std::uint32_t>(frame.size()));
        m_controller.uart().receive(answer.data(), count, 10);
        return answer;
    }

    Waiter_Guard m_waiter;
    std::shared_ptr<Virtual_Box> m_box = std::make_shared<Virtual_Box>();
    Virtual_Box_Controller m_controller{m_box};
};

TEST_F(Box, IdentityIsThatOfTheNeuropixelsDesign) {
    EXPECT_EQ(m_controller.np_status_gpio().read_second_data(), 0x4E500040U);
    EXPECT_EQ(m_controller.build_timestamp_gpio().read_data(), 0x9A300000U);
    EXPECT_NEAR(static_cast<double>(m_controller.xadc().get_temperature()), 25.0, 0.5);
    EXPECT_EQ(m_controller.efuse_gpio().read_data(), 0x0BE00001U);
    m_box->set_register(Virtual_Box::efuse, 5);
    EXPECT_EQ(m_controller.efuse_gpio().read_data(), 5U);
}

TEST_F(Box, EveryAccessIsKeptInOrder) {
    m_controller.write_register(0x0500, 7);
    EXPECT_EQ(m_controller.read_register(0x0500), 7U) << "plain storage";
    EXPECT_EQ(m_controller.read_register(Virtual_Box::pll_locks), 0U);
    EXPECT_EQ(m_box->accesses(), (Accesses{write_of(0x500, 7), read_of(0x500, 7), read_of(0x200, 0)}));
    EXPECT_EQ(m_box->writes(), (Accesses{write_of(0x500, 7)}));
    m_box->forget_accesses();
    EXPECT_EQ(m_box->accesses(), Accesses{});
}

TEST_F(Box, LinksLockWithPowerAndTheFourthOnlyWhenItServesAProbe) {
    EXPECT_EQ(m_controller.read_register(Virtual_Box::pll_locks), 0U);
    m_controller.write_register(Virtual_Box::configuration, power);
    EXPECT_EQ(m_controller.read_register(Virtual_Box::pll_locks), 0x7U);
    power_up();
    EXPECT_EQ(m_controller.read_register(Virtual_Box::pll_locks), 0xFU);
    m_controller.write_register(Virtual_Box::configuration, 0);
    EXPECT_EQ(m_controller.read_register(Virtual_Box::pll_locks), 0U);
}

TEST_F(Box, LinkMayLockLateOrNever) {
    m_box->lock_at_look(0, 3);
    m_box->lock_at_look(1, std::nullopt);
    m_box->lock_at_look(2, std::nullopt);
    m_box->lock_at_look(3, std::nullopt);
    for (int round = 0; round < 2; ++round) {
        m_controller.write_register(Virtual_Box::configuration, 0);
        power_up();
        EXPECT_EQ(m_controller.read_register(Virtual_Box::pll_locks), 0U);
        EXPECT_EQ(m_controller.read_register(Virtual_Box::pll_locks), 0U);
        EXPECT_EQ(m_controller.read_register(Virtual_Box::pll_locks), 1U) << "counted from power-up";
    }
    m_box->lock_at_look(0, std::nullopt);
    EXPECT_EQ(m_controller.read_register(Virtual_Box::pll_locks), 0U) << "a lock may be lost";
}

TEST_F(Box, UARTReachesTheHeadstageOfTheSelectedPort) {
    power_up();
    for (std::uint8_t port = 0; port < 4; ++port) {
        m_box->headstage(port).set(Virtual_Headstage::headstage_eeprom, 0, port);
        m_controller.configurator().assign_uart_to_np_channel(port);
        EXPECT_EQ(ask({0x79, 0xA5, 0, 1}, 2), (Bytes{0xC3, port}));
        EXPECT_EQ(m_box->headstage(port).frames(), (std::vector<Link_Frame>{{0x79, 0xA5, 0, 1}}));
    }
    EXPECT_EQ(m_box->unread_uart_bytes(), 0U);
    EXPECT_EQ(m_box->reads_of_empty_uart(), 0U);
}

TEST_F(Box, HeadstageWithoutPowerOrLockIsSilentAndForgets) {
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] {
                  ask({0x79, 0x81, 0x1E, 1}, 2);
              }),
              "UART_Module recv timeout");
    power_up();
    EXPECT_EQ(ask({0x79, 0x80, 0x04, 1, 0x83}, 1), (Bytes{0xC3}));
    m_controller.write_register(Virtual_Box::configuration, 0);
    EXPECT_EQ(m_box->headstage(0).value(Virtual_Headstage::serializer, 0x04), 0x43);
    power_up();
    m_box->lock_at_look(0, std::nullopt);
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] {
                  ask({0x79, 0x81, 0x1E, 1}, 2);
              }),
              "UART_Module recv timeout");
    EXPECT_EQ(m_box->headstage(0).frames().size(), 1U);
}

TEST_F(Box, AnswersThatNobodyTakesStayInTheFIFO) {
    power_up();
    ask({0x79, 0xA1, 0, 8}, 3);
    EXPECT_EQ(m_box->unread_uart_bytes(), 6U);
    m_controller.configurator().assign_uart_to_np_channel(1);
    EXPECT_EQ(ask({0x79, 0x81, 0x1E, 1}, 2), (Bytes{0x66, 0x55})) << "there is one FIFO for all ports";
}

TEST_F(Box, ReadOfTheEmptyFIFOIsCounted) {
    EXPECT_EQ(m_controller.read_register(Virtual_Box::uart_receive), 0U);
    EXPECT_EQ(m_box->reads_of_empty_uart(), 1U);
}

TEST_F(Box, ForeignConfigurationPortBootsAnotherDesign) {
    m_box->set_register(Virtual_Box::signature, 0x12340000);
    m_controller.foreign_hw_icap().boot(Virtual_Box::neuropixels_flash_address);
    EXPECT_EQ(m_box->boots(), (std::vector<std::uint32_t>{0x00B00000}));
    EXPECT_EQ(m_box->headstage(0).stray_bytes(), 0U) << "its values are not the UART's";
    EXPECT_EQ(m_controller.read_register(Virtual_Box::signature), 0xFFFFFFFFU) << "the box has left the bus";
    EXPECT_EQ(m_box->accesses_while_closed(), 1U);
    EXPECT_TRUE(m_controller.open_driver_connection("box", true));
    EXPECT_EQ(m_controller.read_register(Virtual_Box::signature), 0x4E500040U);
}

TEST_F(Box, BootFromAnEmptyPlaceBringsTheSameDesignBack) {
    m_box->set_register(Virtual_Box::signature, 0x12340000);
    m_controller.foreign_hw_icap().boot(0x00400000);
    EXPECT_TRUE(m_controller.open_driver_connection("box", true));
    EXPECT_EQ(m_controller.read_register(Virtual_Box::signature), 0x12340000U);
    m_box->put_design_into_flash(0x00400000, 0x56780010);
    m_controller.foreign_hw_icap().boot(0x00400000);
    EXPECT_TRUE(m_controller.open_driver_connection("box", true));
    EXPECT_EQ(m_controller.read_register(Virtual_Box::signature), 0x56780010U);
}

TEST_F(Box, ForeignConfigurationPortMayTakeItsTime) {
    m_box->foreign_icap_done_at_read(4);
    const Printed printed = printed_by([&] { m_controller.foreign_hw_icap().boot(0x00B00000); });
    EXPECT_EQ(printed.out, "Waiting for icap_done\nWaiting for icap_done\nWaiting for icap_done\n");
    EXPECT_EQ(m_box->boots().size(), 1U);
}

TEST_F(Box, ForeignConfigurationPortMayNeverBeDone) {
    m_box->foreign_icap_done_at_read(std::nullopt);
    m_controller.write_register(Virtual_Box::foreign_icap_number, 0x10);
    m_controller.write_register(Virtual_Box::foreign_icap_value, 0);
    m_controller.write_register(Virtual_Box::foreign_icap_start, 1);
    for (int read = 0; read < 1000; ++read) {
        ASSERT_EQ(m_controller.read_register(Virtual_Box::foreign_icap_status), 0U);
    }
}

TEST_F(Box, StandardConfigurationPortBoots) {
    m_box->put_design_into_flash(0x00123400, 0x56780010);
    EXPECT_TRUE(m_controller.hw_icap().boot(0x00123400));
    EXPECT_EQ(m_box->boots(), (std::vector<std::uint32_t>{0x00123400}));
    EXPECT_TRUE(m_controller.open_driver_connection("box", true));
    EXPECT_EQ(m_controller.read_register(Virtual_Box::signature), 0x56780010U);
}

TEST_F(Box, StandardConfigurationPortMayHang) {
    m_box->set_hw_icap_behaviour(HW_ICAP_Model::Behaviour::never_done);
    EXPECT_EQ(printed_by([&] { EXPECT_FALSE(m_controller.hw_icap().boot(0)); }).err,
              "M_HW_ICAP_Module :: write done timeout\n");
    m_box->set_hw_icap_behaviour(HW_ICAP_Model::Behaviour::control_never_clears);
    EXPECT_EQ(printed_by([&] { EXPECT_FALSE(m_controller.hw_icap().boot(0)); }).err,
              "M_HW_ICAP_Module :: write CR bit clear timeout\n");
    EXPECT_EQ(m_box->boots(), std::vector<std::uint32_t>{});
}

TEST_F(Box, SPIClockOfTheRHDInterfaceLocksUnlessItIsStuck) {
    m_controller.okelly_adapter().set_spi_freq(42, 25);
    m_box->let_spi_clock_lock(false);
    int waits = 0;
    m_waiter.on_wait([&](std::size_t) {
        if (++waits == 3) {
            m_box->let_spi_clock_lock(true);
            m_controller.write_register(RHD_Interface_Model::triggers, 1);
        }
    });
    m_controller.okelly_adapter().set_spi_freq(42, 25);
    EXPECT_EQ(waits, 3);
}

TEST_F(Box, TTLInputsAreWhatTheWorldMakesThem) {
    m_box->set_register(RHD_Interface_Model::ttl_in, 0xA5);
    EXPECT_EQ(m_controller.okelly_adapter().get_ttl_in_value(), 0xA5U);
    m_controller.okelly_adapter().set_ttl_out_value(9);
    EXPECT_EQ(m_box->value(RHD_Interface_Model::ttl_out), 9U);
}

TEST_F(Box, OpeningGivesTheQueuedResultsFirst) {
    m_controller.close_driver_connection();
    m_box->queue_open_results({Virtual_Box::Open_Result::no_box, Virtual_Box::Open_Result::mapping_fails});
    EXPECT_FALSE(m_controller.open_driver_connection("box", true));
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_controller.open_driver_connection("box", true); }),
              "map bar ioctl failed!");
    m_controller.write_register(0x500, 1);
    EXPECT_EQ(m_controller.read_register(0x500), 0xFFFFFFFFU);
    EXPECT_EQ(m_box->accesses_while_closed(), 2U);
    EXPECT_EQ(m_box->accesses(), Accesses{});
    EXPECT_TRUE(m_controller.open_driver_connection("box", true));
    EXPECT_EQ(m_box->opens(), 4U);
    EXPECT_EQ(m_controller.read_register(0x500), 0U);
}

TEST_F(Box, LateEndOfABackEndLeavesItsSuccessorConnected) {
    auto first = std::make_unique<Virtual_Box_Controller>(m_box);
    EXPECT_TRUE(first->open_driver_connection("box", true));
    first->close_driver_connection();
    Virtual_Box_Controller second(m_box);
    EXPECT_TRUE(second.open_driver_connection("box", true));
    first.reset();
    second.write_register(0x500, 1);
    EXPECT_EQ(m_box->accesses_while_closed(), 0U);
}

} // namespace
