#include "connection/L2_ORBE_Configurator.h"

#include "Log_Capture.h"
#include "Printed.h"
#include "Register_Recorder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Pelgar::ORBE::GPIO_Module;
using Pelgar::ORBE::ORBE_Configurator;
using Pelgar::ORBE::test::Log_Capture;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::text_thrown_by;
using Pelgar::ORBE::test::write_of;

using Accesses = std::vector<Register_Access>;

class ORBEConfigurator : public testing::Test {
protected:
    // One read of the configuration register that answers `before`, and one write of `after`.
    static Accesses change(std::uint32_t before, std::uint32_t after) {
        return {read_of(0x0, before), write_of(0x0, after)};
    }

    // What the call does to the register when it holds `before`.
    template <typename Call>
    Accesses accesses_of(std::uint32_t before, Call&& call) {
        m_registers.set_value(0x0, before);
        m_registers.clear_accesses();
        call();
        return m_registers.accesses();
    }

    Register_Recorder m_registers;
    ORBE_Configurator m_configurator{std::make_shared<GPIO_Module>(&m_registers, 0x0)};
};

TEST_F(ORBEConfigurator, PrintsNothingAndTouchesNothingWhenMade) {
    const auto gpio = std::make_shared<GPIO_Module>(&m_registers, 0x0);
    const auto printed = printed_by([&] { const ORBE_Configurator configurator(gpio); });
    EXPECT_EQ(printed.out, "");
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(ORBEConfigurator, ResetWritesZeroWithoutReading) {
    EXPECT_EQ(accesses_of(0xFFFF'FFFF, [&] { m_configurator.reset_configuration(); }),
              (Accesses{write_of(0x0, 0)}));
}

TEST_F(ORBEConfigurator, EnableStreamsReplacesTheFourLowBits) {
    EXPECT_EQ(accesses_of(0xFFFF'FFFF,
                          [&] {
                              m_configurator.enable_np_streams({1, 3});
                          }),
              change(0xFFFF'FFFF, 0xFFFF'FFFA));
    EXPECT_EQ(accesses_of(0x0, [&] { m_configurator.enable_np_streams({0, 1, 2, 3, 3}); }), change(0x0, 0xF));
    EXPECT_EQ(accesses_of(0xFFFF'FFFF, [&] { m_configurator.enable_np_streams({}); }),
              change(0xFFFF'FFFF, 0xFFFF'FFF0));
}

TEST_F(ORBEConfigurator, EnableStreamsRefusesOtherPortsBeforeItTouchesAnything) {
    EXPECT_EQ(accesses_of(0xFFFF'FFFF,
                          [&] {
                              EXPECT_EQ(text_thrown_by<std::runtime_error>([&] {
                                            m_configurator.enable_np_streams({0, 4});
                                        }),
                                        "enable_np_streams argument invalid");
                              EXPECT_EQ(text_thrown_by<std::runtime_error>(
                                            [&] { m_configurator.enable_np_streams({0xFFFF'FFFF}); }),
                                        "enable_np_streams argument invalid");
                          }),
              Accesses{});
}

TEST_F(ORBEConfigurator, AssignUartReplacesTheChannel) {
    EXPECT_EQ(accesses_of(0x0, [&] { m_configurator.assign_uart_to_np_channel(3); }), change(0x0, 0x30));
    EXPECT_EQ(accesses_of(0xFFFF'FFFF, [&] { m_configurator.assign_uart_to_np_channel(0); }),
              change(0xFFFF'FFFF, 0xFFFF'FFCF));
    EXPECT_EQ(accesses_of(0xFFFF'FFFF, [&] { m_configurator.assign_uart_to_np_channel(2); }),
              change(0xFFFF'FFFF, 0xFFFF'FFEF));
}

TEST_F(ORBEConfigurator, AssignUartRefusesOtherChannels) {
    EXPECT_EQ(accesses_of(0x0,
                          [&] {
                              EXPECT_EQ(text_thrown_by<std::runtime_error>(
                                            [&] { m_configurator.assign_uart_to_np_channel(4); }),
                                        "assign_uart_to_np_channel invalid");
                              EXPECT_EQ(text_thrown_by<std::runtime_error>(
                                            [&] { m_configurator.assign_uart_to_np_channel(255); }),
                                        "assign_uart_to_np_channel invalid");
                          }),
              Accesses{});
}

TEST_F(ORBEConfigurator, ModeIsBitSix) {
    const auto printed = printed_by([&] {
        EXPECT_EQ(accesses_of(0x8000'0000, [&] { m_configurator.set_one_mode(true); }),
                  change(0x8000'0000, 0x8000'0040));
        EXPECT_EQ(accesses_of(0xFFFF'FFFF, [&] { m_configurator.set_one_mode(false); }),
                  change(0xFFFF'FFFF, 0xFFFF'FFBF));
    });
    EXPECT_EQ(printed.out, "Setting ONE mode\nSetting CORE mode\n");
}

TEST_F(ORBEConfigurator, WindowsModeIsBitSevenAndOnlyItsSettingIsTold) {
    const auto printed = printed_by([&] {
        EXPECT_EQ(accesses_of(0x0, [&] { m_configurator.set_tlast_generation_mode_for_Windows_os(true); }),
                  change(0x0, 0x80));
        EXPECT_EQ(
            accesses_of(0xFFFF'FFFF, [&] { m_configurator.set_tlast_generation_mode_for_Windows_os(false); }),
            change(0xFFFF'FFFF, 0xFFFF'FF7F));
    });
    EXPECT_EQ(printed.out, "Setting Windows mode\n");
}

TEST_F(ORBEConfigurator, PowerIsBitEight) {
    const auto printed = printed_by([&] {
        EXPECT_EQ(accesses_of(0x0, [&] { m_configurator.set_VLM004_power(true); }), change(0x0, 0x100));
        EXPECT_EQ(accesses_of(0xFFFF'FFFF, [&] { m_configurator.set_VLM004_power(false); }),
                  change(0xFFFF'FFFF, 0xFFFF'FEFF));
    });
    EXPECT_EQ(printed.out, "set_VLM004_Power on\nset_VLM004_Power off\n");
}

TEST_F(ORBEConfigurator, SoftTriggerPulsesBitNine) {
    const auto printed = printed_by([&] {
        EXPECT_EQ(
            accesses_of(0x1, [&] { m_configurator.soft_trigger_pulse(); }),
            (Accesses{read_of(0x0, 0x1), write_of(0x0, 0x201), read_of(0x0, 0x201), write_of(0x0, 0x1)}));
    });
    EXPECT_EQ(printed.out, "");
}

TEST_F(ORBEConfigurator, PortFourIsBitTenAndOnlyItsSettingIsTold) {
    const auto printed = printed_by([&] {
        EXPECT_EQ(accesses_of(0x0, [&] { m_configurator.assign_port_4_to_np(true); }), change(0x0, 0x400));
        EXPECT_EQ(accesses_of(0xFFFF'FFFF, [&] { m_configurator.assign_port_4_to_np(false); }),
                  change(0xFFFF'FFFF, 0xFFFF'FBFF));
    });
    EXPECT_EQ(printed.out, "Assigning port_4 to NP\n");
}

TEST_F(ORBEConfigurator, TTLSourceClearsThreeBitsAndWritesTwo) {
    const std::vector<std::uint32_t> expected{0xFFFF'C7FF, 0xFFFF'CFFF, 0xFFFF'D7FF, 0xFFFF'DFFF,
                                              0xFFFF'C7FF, 0xFFFF'CFFF, 0xFFFF'D7FF, 0xFFFF'DFFF};
    const auto printed = printed_by([&] {
        for (unsigned index = 0; index < 8; ++index) {
            EXPECT_EQ(accesses_of(0xFFFF'FFFF, [&] { m_configurator.set_hw_trigger_ttl_source(index); }),
                      change(0xFFFF'FFFF, expected[index]))
                << "index " << index;
        }
    });
    EXPECT_EQ(printed.out, "");
}

TEST_F(ORBEConfigurator, TTLSourceThatTruncationLeavesAloneIsNotTold) {
    const auto printed = printed_by([&] {
        for (unsigned index = 0; index < 4; ++index) {
            m_configurator.set_hw_trigger_ttl_source(index);
        }
    });
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(printed.out, "");
}

TEST_F(ORBEConfigurator, TTLSourceThatTruncationChangesIsTold) {
    const auto expect_told = [&](unsigned index, std::uint32_t before, std::uint32_t after) {
        const auto printed = printed_by([&] {
            EXPECT_EQ(accesses_of(before, [&] { m_configurator.set_hw_trigger_ttl_source(index); }),
                      change(before, after));
        });
        EXPECT_EQ(printed.err, "ttl_input_index > 7 truncating\n") << "index " << index;
        EXPECT_EQ(printed.out, "");
    };
    expect_told(4, 0x3800, 0x0);
    expect_told(6, 0x3800, 0x1000);
    expect_told(7, 0x0, 0x1800);
    expect_told(8, 0x3800, 0x0);
    expect_told(0xFFFF'FFFF, 0x0, 0x1800);
}

TEST_F(ORBEConfigurator, PortStatusIsLoggedLineByLine) {
    const Log_Capture log;
    EXPECT_TRUE(ORBE_Configurator::print_np_ports_status(0xA));
    EXPECT_EQ(log.texts(), (std::vector<std::string>{
                               "# Appearent status of NP Ports  #",
                               "NP Port 1 PCLK Locked : No",
                               "NP Port 2 PCLK Locked : Yes",
                               "NP Port 3 PCLK Locked : No",
                               "NP Port 4 PCLK Locked : Yes",
                           }));
    for (const auto& line : log.lines()) {
        EXPECT_EQ(line.verbosity, 0) << line.text;
    }
}

TEST_F(ORBEConfigurator, PortStatusTellsWhetherAnyOfTheFourPortsIsLocked) {
    EXPECT_TRUE(ORBE_Configurator::print_np_ports_status(8));
    EXPECT_TRUE(ORBE_Configurator::print_np_ports_status(0xF));
    EXPECT_FALSE(ORBE_Configurator::print_np_ports_status(0));
    EXPECT_FALSE(ORBE_Configurator::print_np_ports_status(0x10));
    EXPECT_FALSE(ORBE_Configurator::print_np_ports_status(0xFFFF'FFF0));
}

// A back-end whose registers fail.
class Failing_AXI final : public Pelgar::ORBE::I_MemMapped_AXI {
public:
    void write_register(std::uint32_t, std::uint32_t) override { throw std::runtime_error("bus error"); }

    std::uint32_t read_register(std::uint32_t) override { throw std::runtime_error("bus error"); }

    void write_register_bytes(std::uint32_t, std::uint8_t, const std::uint8_t*) override {}
};

TEST_F(ORBEConfigurator, ErrorsOfTheBackEndPassThrough) {
    Failing_AXI registers;
    ORBE_Configurator configurator(std::make_shared<GPIO_Module>(&registers, 0x0));
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { configurator.reset_configuration(); }), "bus error");
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { configurator.enable_np_streams({0}); }), "bus error");
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { configurator.soft_trigger_pulse(); }), "bus error");
}

TEST_F(ORBEConfigurator, RoutingTheLinkOnOneThreadKeepsTheStreamsOfAnother) {
    constexpr int rounds = 2000;
    std::thread router([&] {
        for (int round = 0; round < rounds; ++round) {
            m_configurator.assign_uart_to_np_channel(static_cast<unsigned char>(round % 4));
        }
        m_configurator.assign_uart_to_np_channel(3);
    });
    for (int round = 0; round < rounds; ++round) {
        m_configurator.enable_np_streams({});
        m_configurator.enable_np_streams({0, 2});
        ASSERT_EQ(m_registers.value(0x0) & 0xF, 0x5U);
    }
    router.join();
    EXPECT_EQ(m_registers.value(0x0), 0x35U);
}

} // namespace
