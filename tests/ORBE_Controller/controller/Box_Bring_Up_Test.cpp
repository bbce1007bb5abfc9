// FPGA identity, firmware switch and pre-initialisation, from the controller down.
#include "Controller_Fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Milliseconds = std::vector<std::chrono::milliseconds>;
using Accesses = std::vector<Register_Access>;
using Texts = std::vector<std::string>;

class Firmware : public Opened_Controller_Fixture {};

TEST_F(Firmware, MatchingDesignWritesNothing) {
    m_registers.set_value(signature, 0x4E50ABCD);
    const Printed printed =
        printed_by([&] { EXPECT_TRUE(m_controller->check_and_switch_firmware_if_nec(true)); });
    EXPECT_EQ(printed.out, "GPIO Second data at adres : 0x208\n");
    EXPECT_EQ(m_registers.accesses(), (Accesses{read_of(signature, 0x4E50ABCD)}));
    EXPECT_EQ(m_log.texts(),
              (Texts{"ORBE_Controller_Library ctor. (HW mode)", "FPGA digital_design_signature : 4e50abcd\n",
                     "digital_design_id matched"}));
    EXPECT_TRUE(m_log.has_scope(0, "check_and_switch_firmware_if_nec"));
}

TEST_F(Firmware, OtherDesignIsRefusedWhenNoSwitchIsAllowed) {
    m_registers.set_value(signature, 0x12345678);
    EXPECT_FALSE(m_controller->check_and_switch_firmware_if_nec(false));
    EXPECT_EQ(m_log.count(0, "digital_design_id not matched"), 1);
    EXPECT_EQ(m_registers.writes(), Accesses{});
}

TEST_F(Firmware, OtherDesignIsSwitchedByExactlySevenWritesACloseAWaitAndAnOpen) {
    m_registers.set_value(signature, 0x12345678);
    m_registers.set_value(0x040C, 1);
    EXPECT_TRUE(m_controller->check_and_switch_firmware_if_nec(true));
    EXPECT_EQ(m_registers.writes(),
              (Accesses{write_of(0x400, 0x10), write_of(0x404, 0x00B00000), write_of(0x408, 1),
                        write_of(0x408, 0), write_of(0x400, 4), write_of(0x404, 15), write_of(0x408, 1)}));
    EXPECT_EQ(m_box->close_count(), 1);
    EXPECT_EQ(m_waiter.waits(), Milliseconds{10'000ms});
    EXPECT_EQ(m_box->open_calls().size(), 2U);
    EXPECT_EQ(m_log.count(0, "Switching FPGA design"), 1);
    EXPECT_EQ(m_log.count(0, "Waiting for reboot of the FPGA"), 1);
    EXPECT_EQ(m_log.count(0, "Wait end"), 1);
    const auto accesses = m_registers.accesses();
    EXPECT_EQ(std::count(accesses.begin(), accesses.end(), read_of(signature, 0x12345678)), 1)
        << "the signature is not checked again";
}

TEST_F(Firmware, ConnectionIsClosedBeforeTheRebootIsWaitedForAndOpenedAfterwards) {
    m_registers.set_value(signature, 0x12345678);
    m_registers.set_value(0x040C, 1);
    int closed = 0;
    std::size_t opened = 0;
    m_waiter.on_wait([&](std::size_t) {
        closed = m_box->close_count();
        opened = m_box->open_calls().size();
    });
    EXPECT_TRUE(m_controller->check_and_switch_firmware_if_nec(true));
    EXPECT_EQ(m_waiter.waits(), Milliseconds{10'000ms});
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(opened, 1U);
    EXPECT_EQ(m_box->open_calls().size(), 2U);
}

TEST_F(Firmware, SwitchWaitsForTheConfigurationPort) {
    m_registers.set_value(signature, 0);
    m_registers.queue_reads(0x040C, {0, 2, 1});
    const Printed printed =
        printed_by([&] { EXPECT_TRUE(m_controller->check_and_switch_firmware_if_nec(true)); });
    EXPECT_EQ(printed.out,
              "GPIO Second data at adres : 0x208\nWaiting for icap_done\nWaiting for icap_done\n");
    EXPECT_EQ(m_waiter.waits(), (Milliseconds{100ms, 100ms, 10'000ms}));
}

TEST_F(Firmware, SwitchAnswersTheResultOfOpeningAgain) {
    m_registers.set_value(signature, 0);
    m_registers.set_value(0x040C, 1);
    m_box->set_open_result(false);
    EXPECT_FALSE(m_controller->check_and_switch_firmware_if_nec(true));
    EXPECT_EQ(m_log.count(-2, "Open driver failed"), 1);
    EXPECT_EQ(m_controller->get_current_error_level(), Error_Level::driver_open);
}

TEST_F(Firmware, SimulationSkipsTheCheck) {
    ORBE_Controller_Library simulated(m_box, true);
    EXPECT_TRUE(simulated.check_and_switch_firmware_if_nec(true));
    EXPECT_EQ(m_log.count(0, "check_and_switch_firmware_if_nec skipped because of simulation mode"), 1);
    EXPECT_EQ(m_registers.accesses(), Accesses{});
}

TEST_F(Firmware, IcapBootWritesTheWarmBootSequence) {
    m_registers.set_value(0x1510, 1);
    m_registers.queue_reads(0x150C, {1, 0});
    const Printed printed = printed_by([&] { EXPECT_TRUE(m_controller->icap_boot(0x00B01234)); });
    EXPECT_EQ(printed.out, "Boot cmd suceeded\n");
    EXPECT_EQ(
        m_registers.writes(),
        (Accesses{write_of(0x1500, 0xFFFFFFFF), write_of(0x1500, 0xAA995566), write_of(0x1500, 0x20000000),
                  write_of(0x1500, 0x30020001), write_of(0x1500, 0x3412B000), write_of(0x1500, 0x30008001),
                  write_of(0x1500, 0x0000000F), write_of(0x1500, 0x20000000), write_of(0x150C, 1)}));
    EXPECT_TRUE(m_log.has_scope(0, "icap_boot"));
}

TEST_F(Firmware, IcapBootReportsAPortThatNeverAnswers) {
    const Printed never_done = printed_by([&] { EXPECT_FALSE(m_controller->icap_boot(0)); });
    EXPECT_EQ(never_done.err, "M_HW_ICAP_Module :: write done timeout\n");
    EXPECT_EQ(m_waiter.waits(), Milliseconds{});
    m_registers.set_value(0x1510, 1);
    m_registers.queue_reads(0x150C, std::vector<std::uint32_t>(100, 1));
    const Printed never_clear = printed_by([&] { EXPECT_FALSE(m_controller->icap_boot(0)); });
    EXPECT_EQ(never_clear.err, "M_HW_ICAP_Module :: write CR bit clear timeout\n");
}

class Pre_Init : public Opened_Controller_Fixture {
protected:
    static Texts port_table(int locked_port) {
        Texts lines{"# Appearent status of NP Ports  #"};
        for (int port = 1; port <= 4; ++port) {
            lines.push_back("NP Port " + std::to_string(port) +
                            " PCLK Locked : " + (port == locked_port ? "Yes" : "No"));
        }
        return lines;
    }
};

TEST_F(Pre_Init, LogsTheIdentityThenConfiguresThenLooksForALock) {
    m_registers.set_value(build_timestamp, 0x41300000);
    m_registers.set_value(signature, 0x4E500020);
    m_registers.set_value(efuse, 0xBEEF);
    m_registers.set_value(temperature, 0x9E50);
    m_registers.set_value(pll_lock, 0x2);
    m_log.clear();
    const Printed printed = printed_by([&] { EXPECT_TRUE(m_controller->pre_init(true)); });
    Texts expected{"ORBE_Controller_Library::pre_init(), simulation = 0",
                   "FPGA design build timestamp : 08-02-2024\n",
                   "FPGA digital_design_signature : 4e500020\n",
                   "NP port_count_parameter_from_fpga : 2\n",
                   "FPGA efuse_usr : 0000beef\n",
                   "FPGA temperature : 38.53\n",
                   "Available NP port count from FPGA : 2",
                   "Masked pll status : 2"};
    for (const std::string& line : port_table(2)) {
        expected.push_back(line);
    }
    expected.push_back("At least one NP Port PLL lock");
    EXPECT_EQ(m_log.texts(), expected);
    EXPECT_TRUE(m_log.has_scope(0, "pre_init"));
    EXPECT_TRUE(m_log.has_scope(0, "check_np_ports_status"));
    EXPECT_EQ(m_registers.writes_to(configuration), (std::vector<std::uint32_t>{0, 0x040, 0x140, 0x540}));
    EXPECT_EQ(m_controller->get_cached_np_port_status(), 2);
    EXPECT_EQ(m_controller->get_np_port_count_from_fpga_signature(), 2);
    EXPECT_NE(printed.out.find("Setting ONE mode\nset_VLM004_Power on\nAssigning port_4 to NP\n"),
              std::string::npos);
}

TEST_F(Pre_Init, CoreModeWhenOneModeIsNotWanted) {
    const Printed printed = printed_by([&] { EXPECT_TRUE(m_controller->pre_init(false)); });
    EXPECT_EQ(m_registers.writes_to(configuration), (std::vector<std::uint32_t>{0, 0, 0x100, 0x500}));
    EXPECT_NE(printed.out.find("Setting CORE mode\n"), std::string::npos);
}

TEST_F(Pre_Init, PortCountMasksTheLocks) {
    const std::vector<std::pair<std::uint32_t, int>> masks{{1, 0x1}, {2, 0x3}, {3, 0x7}, {4, 0xF}};
    for (const auto& [count, mask] : masks) {
        m_registers.set_value(signature, 0x4E500000 | (count << 4));
        m_registers.set_value(pll_lock, 0xFFFFFFFF);
        EXPECT_TRUE(m_controller->pre_init(true));
        EXPECT_EQ(m_controller->get_cached_np_port_status(), mask);
    }
    EXPECT_EQ(m_log.count("Masked pll status : 7"), 1);
}

TEST_F(Pre_Init, NoLockFailsAfterFiveAttempts) {
    m_registers.set_value(pll_lock, 0);
    EXPECT_FALSE(m_controller->pre_init(true));
    EXPECT_EQ(m_waiter.waits(), (Milliseconds{1000ms, 1000ms, 1000ms, 1000ms, 1000ms}));
    EXPECT_EQ(m_log.count(0, "Waiting for NP Port PLL lock"), 5);
    EXPECT_EQ(m_log.count(-1, "check_np_ports_status failed check connector connections"), 1);
    const auto accesses = m_registers.accesses();
    EXPECT_EQ(std::count(accesses.begin(), accesses.end(), read_of(pll_lock, 0)), 5);
    EXPECT_EQ(m_log.has_scope(1, "I2C_Over_GSML_Module"), false) << "nothing else is created";
}

TEST_F(Pre_Init, LockOnTheThirdAttemptIsEnough) {
    m_registers.queue_reads(pll_lock, {0, 0, 0x4});
    EXPECT_TRUE(m_controller->pre_init(true));
    EXPECT_EQ(m_waiter.waits(), (Milliseconds{1000ms, 1000ms}));
    EXPECT_EQ(m_controller->get_cached_np_port_status(), 4);
}

TEST_F(Pre_Init, LockOfAPortThatTheDesignDoesNotOfferDoesNotCount) {
    m_registers.set_value(signature, 0x4E500010);
    m_registers.set_value(pll_lock, 0xE);
    EXPECT_FALSE(m_controller->pre_init(true));
}

TEST_F(Pre_Init, ImpossiblePortCountNeverLocks) {
    for (const std::uint32_t count : {0U, 5U, 15U}) {
        m_log.clear();
        m_registers.set_value(signature, 0x4E500000 | (count << 4));
        m_registers.set_value(pll_lock, 0xF);
        EXPECT_FALSE(m_controller->pre_init(true));
        EXPECT_EQ(m_log.count(-2, "Invalid m_np_port_count_parameter_from_fpga"), 1);
        EXPECT_EQ(m_log.count(0, "Waiting for NP Port PLL lock"), 5);
    }
}

TEST_F(Pre_Init, MakesOneLinkAndFourControlsAndReplacesThemWhenCalledAgain) {
    EXPECT_TRUE(m_controller->pre_init(true));
    EXPECT_EQ(m_log.count("{ I2C_Over_GSML_Module"), 1);
    EXPECT_EQ(m_log.count("{ NP_Probe_Control_Module"), 4);
    EXPECT_EQ(m_log.count("{ ~NP_Probe_Control_Module"), 0);
    EXPECT_TRUE(m_controller->pre_init(true));
    EXPECT_EQ(m_log.count("{ I2C_Over_GSML_Module"), 2);
    EXPECT_EQ(m_log.count("{ ~I2C_Over_GSML_Module"), 1);
    EXPECT_EQ(m_log.count("{ ~NP_Probe_Control_Module"), 4);
}

TEST_F(Pre_Init, ReplacesItsObjectsOneByOne) {
    EXPECT_TRUE(m_controller->pre_init(true));
    m_log.clear();
    EXPECT_TRUE(m_controller->pre_init(true));
    std::vector<std::string> made;
    for (const Log_Line& line : m_log.lines()) {
        if (line.text.find("_Module") != std::string::npos && line.text.starts_with("{ ")) {
            made.push_back(line.text);
        }
    }
    std::vector<std::string> expected{"{ I2C_Over_GSML_Module", "{ ~I2C_Over_GSML_Module"};
    for (int port = 0; port < 4; ++port) {
        expected.insert(expected.end(), {"{ NP_Probe_Control_Module", "{ ~NP_Probe_Control_Module"});
    }
    EXPECT_EQ(made, expected);
}

TEST_F(Pre_Init, OpeningAnewKeepsWhatThePortsAreConfiguredTo) {
    EXPECT_TRUE(m_controller->pre_init(true));
    EXPECT_TRUE(m_controller->setGain(2, 100, 3, 5));
    EXPECT_TRUE(m_controller->open());
    int ap_gain = 0;
    int lfp_gain = 0;
    EXPECT_TRUE(m_controller->getGain(2, 100, &ap_gain, &lfp_gain));
    EXPECT_EQ(ap_gain, 3);
}

TEST_F(Pre_Init, ProbeLinkGoesThroughTheUartOfTheConnectionOpenedLast) {
    ORBE_Controller_Library simulated(true);
    EXPECT_TRUE(simulated.open());
    EXPECT_TRUE(simulated.pre_init(true));
    EXPECT_TRUE(simulated.open()) << "which brings another UART";
    EXPECT_TRUE(simulated.writeProbeConfiguration(0, false));
}

TEST_F(Pre_Init, SimulationReadsNoRegister) {
    ORBE_Controller_Library simulated(m_box, true);
    m_log.clear();
    EXPECT_TRUE(simulated.pre_init(true));
    EXPECT_EQ(m_registers.accesses(), Accesses{});
    EXPECT_EQ(simulated.get_cached_np_port_status(), 1);
    EXPECT_EQ(simulated.get_np_port_count_from_fpga_signature(), 2);
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library::pre_init(), simulation = 1"), 1);
    EXPECT_EQ(m_log.count(0, "Simulating pll status : 1"), 1);
    EXPECT_EQ(m_log.count("{ NP_Probe_Control_Module"), 4);
}

class Identity : public Opened_Controller_Fixture {};

TEST_F(Identity, DesignIdentifierIsEightLowerCaseDigits) {
    m_registers.set_value(signature, 0x4E5000AF);
    EXPECT_EQ(m_controller->get_design_identifier_from_fpga(), "4e5000af");
    m_registers.set_value(signature, 0x12);
    EXPECT_EQ(m_controller->get_design_identifier_from_fpga(), "00000012");
}

TEST_F(Identity, BuildDate) {
    m_registers.set_value(build_timestamp, 0x41300000);
    EXPECT_EQ(m_controller->get_design_build_date(), "08-02-2024");
    m_registers.set_value(build_timestamp, 0x4131FFFF);
    EXPECT_EQ(m_controller->get_design_build_date(), "08-02-2024") << "bits 16..0 mean nothing";
    m_registers.set_value(build_timestamp, (31U << 27U) | (12U << 23U) | (63U << 17U));
    EXPECT_EQ(m_controller->get_design_build_date(), "31-12-2063");
}

TEST_F(Identity, TemperatureUsesTheRoundScale) {
    m_registers.set_value(temperature, 0x9E5F);
    EXPECT_FLOAT_EQ(m_controller->get_fpga_temperature(),
                    static_cast<float>(0x9E5 * 504.0 * (1.0 / 4096) - 273.15));
    m_registers.set_value(temperature, 0);
    EXPECT_FLOAT_EQ(m_controller->get_fpga_temperature(), -273.15F);
}

TEST_F(Identity, EfuseIsReadOnEveryCall) {
    m_registers.queue_reads(efuse, {1, 0xFFFFFFFF});
    EXPECT_EQ(m_controller->get_fpga_efuse(), 1U);
    EXPECT_EQ(m_controller->get_fpga_efuse(), 0xFFFFFFFFU);
}

} // namespace
