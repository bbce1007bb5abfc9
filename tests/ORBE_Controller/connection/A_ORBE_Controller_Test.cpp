#include "connection/A_ORBE_Controller.h"

#include "Fake_ORBE_Controller.h"
#include "Printed.h"
#include "back_ends/CP_Sim_ORBE_Controller.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace {

using Pelgar::ORBE::A_ORBE_Controller;
using Pelgar::ORBE::CP_Sim_ORBE_Controller;
using Pelgar::ORBE::test::Fake_ORBE_Controller;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::write_of;

const std::string construction_lines = "A_ORBE_Controller ctor\n"
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
                                       "GPIO_Module ctor at base adr : 1600\n";

TEST(AORBEController, FactoryMakesTheSimulationWithItsModulesInOrder) {
    std::shared_ptr<A_ORBE_Controller> controller;
    const auto printed = printed_by([&] { controller = A_ORBE_Controller::get_instance(true); });
    EXPECT_EQ(printed.out, construction_lines);
    EXPECT_EQ(printed.err, "");
    EXPECT_NE(dynamic_cast<CP_Sim_ORBE_Controller*>(controller.get()), nullptr);
}

TEST(AORBEController, FactoryCachesNothing) {
    const auto first = A_ORBE_Controller::get_instance(true);
    const auto second = A_ORBE_Controller::get_instance(true);
    EXPECT_NE(first, second);
    EXPECT_NE(&first->spi(), &second->spi());
    EXPECT_NE(&first->configurator(), &second->configurator());
    EXPECT_EQ(first.use_count(), 1) << "the modules must not keep their controller alive";
}

TEST(AORBEController, EveryModuleLiesAtItsAddress) {
    const auto controller = A_ORBE_Controller::get_instance(true);
    EXPECT_EQ(controller->spi().base_address(), 0x500U);
    EXPECT_EQ(controller->np_status_gpio().base_address(), 0x200U);
    EXPECT_EQ(controller->configuration_gpio().base_address(), 0x0U);
    EXPECT_EQ(controller->build_timestamp_gpio().base_address(), 0x8U);
    EXPECT_EQ(controller->uart().base_address(), 0x400U);
    EXPECT_EQ(controller->xadc().base_address(), 0x800U);
    EXPECT_EQ(controller->okelly_adapter().base_address(), 0x1000U);
    EXPECT_EQ(controller->axi_stream_fifo().base_address(), 0x1200U);
    EXPECT_EQ(controller->hw_icap().base_address(), 0x1400U);
    EXPECT_EQ(controller->foreign_hw_icap().base_address(), 0x400U);
    EXPECT_EQ(controller->efuse_gpio().base_address(), 0x1600U);
}

TEST(AORBEController, ModulesUseTheControllersRegisters) {
    Fake_ORBE_Controller controller;
    controller.registers().set_value(0x0, 0xFF00'0000);
    controller.configurator().enable_np_streams({2});
    controller.okelly_adapter().trigger_fsm();
    controller.np_status_gpio().write_data(1);
    controller.build_timestamp_gpio().write_data(2);
    controller.efuse_gpio().write_data(3);
    EXPECT_EQ(controller.registers().writes(),
              (std::vector<Register_Access>{write_of(0x0, 0xFF00'0004), write_of(0x10A4, 1),
                                            write_of(0x200, 1), write_of(0x8, 2), write_of(0x1600, 3)}));
}

TEST(AORBEController, BytesAreWrittenOneByOneToTheSameAddress) {
    Fake_ORBE_Controller controller;
    const std::array<std::uint8_t, 3> bytes{0xFF, 0x00, 0x80};
    controller.write_register_bytes(0x404, 3, bytes.data());
    EXPECT_EQ(
        controller.registers().accesses(),
        (std::vector<Register_Access>{write_of(0x404, 0xFF), write_of(0x404, 0x00), write_of(0x404, 0x80)}));
}

TEST(AORBEController, NoneAndTheMostBytesCanBeWritten) {
    Fake_ORBE_Controller controller;
    controller.write_register_bytes(0x404, 0, nullptr);
    EXPECT_TRUE(controller.registers().accesses().empty());
    std::vector<std::uint8_t> bytes(255);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    controller.write_register_bytes(0x404, 255, bytes.data());
    std::vector<std::uint32_t> expected(255);
    std::iota(expected.begin(), expected.end(), 0U);
    EXPECT_EQ(controller.registers().writes_to(0x404), expected);
}

// A back-end that makes its modules when it is told to.
class Remaking_Controller final : public Pelgar::ORBE::A_ORBE_Controller {
public:
    using A_ORBE_Controller::create_modules;

    void write_register(std::uint32_t, std::uint32_t) override {}

    std::uint32_t read_register(std::uint32_t) override { return 0; }

    bool open_driver_connection(const std::string&, bool) override { return false; }

    void close_driver_connection() override {}

    bool set_extended_property(std::uint32_t, std::uint32_t) override { return false; }

    bool setup_read(std::uint8_t*, std::uint32_t, std::uint8_t, std::uint32_t) override { return false; }

    std::uint32_t read_stream(std::uint64_t, bool) override { return 0; }

    void write_xdma_register(std::uint32_t, std::uint32_t) override {}

    std::uint32_t read_xdma_register(std::uint32_t) override { return 0; }
};

TEST(AORBEController, ModulesAreMadeByOneFunctionThatEveryBackEndShares) {
    std::unique_ptr<Remaking_Controller> controller;
    const auto bare = printed_by([&] { controller = std::make_unique<Remaking_Controller>(); });
    EXPECT_EQ(bare.out, "A_ORBE_Controller ctor\n");
    const auto made = printed_by([&] { controller->create_modules(); });
    EXPECT_EQ("A_ORBE_Controller ctor\n" + made.out, construction_lines);
    controller->okelly_adapter().enable_streams({1, 2});
    controller->create_modules();
    EXPECT_EQ(controller->okelly_adapter().get_enabled_stream_count(), 0U) << "the modules must be new ones";
    const auto released = printed_by([&] { controller.reset(); });
    EXPECT_EQ(released.out, "A_ORBE_Controller dtor\n");
}

} // namespace
