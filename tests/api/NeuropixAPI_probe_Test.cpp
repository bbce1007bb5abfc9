// Opening, initialising, configuring and identifying probes, in simulation mode, where every probe answers
// 0xC3.
#include "API_Fixture.h"
#include "Invalid_Subscript.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Neuropixels;
using Pelgar::ORBE::test::API_Fixture;
using Pelgar::ORBE::test::expect_invalid_subscript;
using Texts = std::vector<std::string>;

class Probe_Setup : public API_Fixture {
protected:
    Probe_Setup() {
        open_simulation(mebibyte);
        wait_for_quiet_log();
        m_log.clear();
    }

    static std::string last_error() {
        std::array<char, 200> text{};
        getLastErrorMessage(text.data(), text.size());
        return text.data();
    }

    void expect_scope_and_line(const std::string& name, int verbosity, const std::string& line) {
        EXPECT_TRUE(m_log.has_scope(0, name));
        EXPECT_EQ(m_log.count(verbosity, line), 1) << name;
        m_log.clear();
    }
};

TEST_F(Probe_Setup, OpenAndCloseAreLogged) {
    EXPECT_EQ(openPort(1, 2), SUCCESS);
    expect_scope_and_line("openPort", 0, "slotID : 1, portID : 2");
    EXPECT_EQ(openProbe(1, 2, 3), SUCCESS);
    expect_scope_and_line("openProbe", 0, "slotID : 1, portID : 2, dockID : 3");
    EXPECT_EQ(closeProbe(1, 2, 3), SUCCESS);
    expect_scope_and_line("closeProbe", 0, "slotID : 1, portID : 2");
    EXPECT_EQ(closePort(1, 2), SUCCESS);
    expect_scope_and_line("closePort", 0, "SlotID : 1, portID : 2");
}

TEST_F(Probe_Setup, OpenPortCallsTheFirstInitialisationStepOfThePortIndex) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(openPort(0, 4), SUCCESS);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "skipping init for simulation mode\n");
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library::probe_init_part_1() np_port_id : 3"), 1);
}

TEST_F(Probe_Setup, PortsThatDoNotExistFailToOpen) {
    for (const int port : {0, 5, -2}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(openPort(0, port), FAILED);
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  "ORBE_Controller_Library::init invalid port id parameter\n");
        EXPECT_EQ(init(0, port, 0), FAILED);
        EXPECT_EQ(writeProbeConfiguration(0, port, 0, false), FAILED);
    }
    EXPECT_EQ(m_log.count(-2, "Invalid argument at writeProbeConfiguration"), 3);
}

TEST_F(Probe_Setup, InitUsesModeOneWithoutTheSwitchFile) {
    EXPECT_EQ(init(1, 2, 3), SUCCESS);
    EXPECT_TRUE(m_log.has_scope(0, "init"));
    EXPECT_EQ(m_log.count(0, "slotID : 1, portID : 2, dockID : 3"), 1);
    EXPECT_EQ(m_log.count(0, "Using init config : 1"), 1);
    EXPECT_EQ(m_log.count(0, "ORBE_Controller_Library::probe_init_part_2() np_port_id : 1, init_config : 1"),
              1);
    EXPECT_TRUE(m_log.has_scope(1, "np_init"));
}

TEST_F(Probe_Setup, InitReadsItsModeFromTheSwitchFile) {
    std::ofstream("ORBE_NP_INIT_MODE") << "0\n";
    EXPECT_EQ(init(0, 1, 0), SUCCESS);
    EXPECT_EQ(m_log.count(0, "Using init config : 0"), 1);
    EXPECT_FALSE(m_log.has_scope(1, "np_init"));
    std::ofstream("ORBE_NP_INIT_MODE") << "4\r\n1\n";
    EXPECT_EQ(init(0, 1, 0), SUCCESS);
    EXPECT_EQ(m_log.count(0, "Using init config : 4"), 1);
    EXPECT_TRUE(m_log.has_scope(1, "bist_pixel"));
    std::ofstream("ORBE_NP_INIT_MODE") << "-7";
    EXPECT_EQ(init(0, 1, 0), SUCCESS);
    EXPECT_EQ(m_log.count(0, "Using init config : -7"), 1);
}

TEST_F(Probe_Setup, InitFallsBackToModeOneWhenTheSwitchFileHoldsNoNumber) {
    for (const char* content : {"abc\n", "", "99999999999\n"}) {
        std::ofstream("ORBE_NP_INIT_MODE", std::ios::trunc) << content;
        m_log.clear();
        testing::internal::CaptureStderr();
        EXPECT_EQ(init(0, 1, 0), SUCCESS);
        const std::string printed = testing::internal::GetCapturedStderr();
        EXPECT_NE(printed.find("Exception catched at init config integer conversion\n"), std::string::npos);
        EXPECT_EQ(m_log.count(0, "Using init config : 1"), 1);
    }
}

TEST_F(Probe_Setup, SweepsAreLoggedAtTheirFirstChannelOnly) {
    for (const int channel : {5, 6, 7}) {
        EXPECT_EQ(setGain(1, 2, 3, channel, 4, 0), SUCCESS);
    }
    EXPECT_EQ(m_log.texts(),
              (Texts{"slotID : 1, portID : 2, dockID : 3", "channel=5, ap_gain=4, lfp_gain=0"}));
    EXPECT_EQ(m_log.count("{ setGain"), 1);
    m_log.clear();
    EXPECT_EQ(setGain(1, 2, 3, 5, 1, 2), SUCCESS);
    EXPECT_EQ(setGain(1, 2, 3, 7, 3, 5), SUCCESS);
    EXPECT_EQ(m_log.count(0, "channel=7, ap_gain=3, lfp_gain=5"), 1) << "channel 7 after 5 is no sweep";
}

TEST_F(Probe_Setup, EverySweepHasItsOwnLastChannel) {
    EXPECT_EQ(selectElectrode(0, 1, 0, 10, 0, 1), SUCCESS);
    EXPECT_EQ(m_log.texts(), (Texts{"slotID : 0, portID : 1, dockID : 0", "channel=10, bank=1"}));
    m_log.clear();
    EXPECT_EQ(setReference(0, 1, 0, 11, 0, TIP_REF, 2), SUCCESS);
    EXPECT_EQ(m_log.texts(), (Texts{"slotID : 0, portID : 1, dockID : 0", "channel=11,reference=1,bank=2"}));
    m_log.clear();
    EXPECT_EQ(setAPCornerFrequency(0, 1, 0, 12, true), SUCCESS);
    EXPECT_EQ(m_log.texts(),
              (Texts{"slotID : 0, portID : 1, dockID : 0", "channel=12, disableHighPass : 1"}));
    m_log.clear();
    EXPECT_EQ(selectElectrode(0, 1, 0, 11, 0, 1), SUCCESS);
    EXPECT_EQ(setReference(0, 1, 0, 12, 0, TIP_REF, 2), SUCCESS);
    EXPECT_EQ(setAPCornerFrequency(0, 1, 0, 13, true), SUCCESS);
    EXPECT_EQ(m_log.texts(), Texts{});
}

TEST_F(Probe_Setup, GainsAreAnsweredAsTheConfigurationKeepsThem) {
    EXPECT_EQ(setGain(0, 1, 0, 20, 3, 5), SUCCESS);
    m_log.clear();
    int ap = -1;
    int lfp = -1;
    EXPECT_EQ(getGain(0, 1, 0, 20, &ap, &lfp), SUCCESS);
    EXPECT_EQ(ap, 3);
    EXPECT_EQ(lfp, 3) << "the LFP code is never answered";
    EXPECT_EQ(m_log.count(0, "portID : 1, APgainselect : 3, LFPgainselect : 3"), 1);
    EXPECT_EQ(getGain(0, 2, 0, 20, &ap, nullptr), SUCCESS);
    EXPECT_EQ(ap, 0) << "every port has its own";
}

TEST_F(Probe_Setup, GainsThatCannotBeAnsweredLeaveAndLogTheHostsNumbers) {
    int ap = 41;
    int lfp = -42;
    EXPECT_EQ(getGain(0, 1, 0, 384, &ap, &lfp), FAILED);
    EXPECT_EQ(m_log.count(0, "portID : 1, APgainselect : 41, LFPgainselect : -42"), 1);
    EXPECT_EQ(closeBS(0), SUCCESS);
    EXPECT_EQ(getGain(0, 3, 0, 0, &ap, nullptr), FAILED);
    EXPECT_EQ(m_log.count(0, "portID : 3, APgainselect : 41, LFPgainselect : 0"), 1);
    EXPECT_EQ(ap, 41);
    EXPECT_EQ(lfp, -42);
}

TEST_F(Probe_Setup, RejectedValuesFail) {
    EXPECT_EQ(selectElectrode(0, 1, 0, 191, 0, 0), FAILED);
    EXPECT_EQ(
        m_log.count(-2, "invalid channel: 191. selection of reference electrode 191/575/959 not allowed"), 1);
    EXPECT_EQ(selectElectrode(0, 1, 0, -1, 0, 0), FAILED);
    EXPECT_EQ(selectElectrode(0, 1, 0, 384, 0, 0), FAILED);
    EXPECT_EQ(m_log.count(-2, "invalid channel: 384. index out of bound."), 1);
    EXPECT_EQ(setGain(0, 1, 0, 0, 8, 0), FAILED);
    EXPECT_EQ(m_log.count(-2, "invalid AP gain: 8"), 1);
    EXPECT_EQ(setGain(0, 1, 0, 0, 0, 8), FAILED);
    EXPECT_EQ(setAPCornerFrequency(0, 1, 0, 384, false), FAILED);
}

TEST_F(Probe_Setup, NumbersThatNoByteHoldsAreNotTakenForOthers) {
    EXPECT_EQ(selectElectrode(0, 1, 0, 0, 0, 256), FAILED);
    EXPECT_EQ(m_log.count(-2, "invalid electrode bank: 256"), 1);
    EXPECT_EQ(selectElectrode(0, 1, 0, 0, 0, -1), FAILED);
    EXPECT_EQ(m_log.count(-2, "invalid electrode bank: -1"), 1);
    EXPECT_EQ(setGain(0, 1, 0, 0, 256, 0), FAILED);
    EXPECT_EQ(m_log.count(-2, "invalid AP gain: 256"), 1);
    EXPECT_EQ(setGain(0, 1, 0, 0, 0, -256), FAILED);
    EXPECT_EQ(m_log.count(-2, "invalid LFP gain: -256"), 1);
}

TEST_F(Probe_Setup, ReferenceBankThatNoByteHoldsDoesNotSpoilLaterCalls) {
    EXPECT_EQ(setReference(0, 1, 0, 0, 0, INT_REF, 256), FAILED);
    EXPECT_EQ(m_log.count(-2, "invalid channel internal reference: 256"), 1);
    EXPECT_EQ(setReference(0, 1, 0, 0, 0, INT_REF, -1), FAILED);
    EXPECT_EQ(m_log.count(-2, "invalid channel internal reference: -1"), 1);
    EXPECT_EQ(setReference(0, 1, 0, 0, 0, INT_REF, 0), SUCCESS);
    EXPECT_EQ(setReference(0, 1, 0, 1, 0, INT_REF, 0), SUCCESS);
}

TEST_F(Probe_Setup, ChannelSettingsOfAPortThatDoesNotExistThrow) {
    int gain = 0;
    for (const int port : {0, 5}) {
        expect_invalid_subscript([&] { selectElectrode(0, port, 0, 0, 0, 0); });
        expect_invalid_subscript([&] { setGain(0, port, 0, 0, 0, 0); });
        expect_invalid_subscript([&] { getGain(0, port, 0, 0, &gain, &gain); });
        expect_invalid_subscript([&] { setReference(0, port, 0, 0, 0, EXT_REF, 0); });
        expect_invalid_subscript([&] { setAPCornerFrequency(0, port, 0, 0, false); });
        EXPECT_EQ(setADCCalibration(0, port, "a.csv"), FAILED);
        EXPECT_EQ(setGainCalibration(0, port, 0, "a.csv"), FAILED);
        EXPECT_EQ(clear_all_electrode_to_bank_assignments(0, port), SUCCESS);
    }
}

TEST_F(Probe_Setup, ClearingAssignmentsIsLogged) {
    EXPECT_EQ(clear_all_electrode_to_bank_assignments(0, 1), SUCCESS);
    EXPECT_EQ(m_log.count(0, "Clearing all channel to pixel assignments."), 1);
}

TEST_F(Probe_Setup, CalibrationFilesThatAreMissingFail) {
    EXPECT_EQ(setADCCalibration(1, 2, "missing.csv"), FAILED);
    EXPECT_EQ(m_log.count(1, "slotID : 1, portID : 2, filename : missing.csv"), 1);
    EXPECT_EQ(m_log.count(-2, "ADC Calibration load error"), 1);
    EXPECT_EQ(last_error(), "Calibration file cannot be opened, No such file or directory: missing.csv");
    EXPECT_EQ(setADCCalibration(1, 2, nullptr), FAILED);
    EXPECT_EQ(setGainCalibration(1, 2, 3, "missing.csv"), FAILED);
    EXPECT_EQ(m_log.count(1, "slotID : 1, portID : 2"), 1);
    EXPECT_EQ(last_error(), "Calibration file cannot be opened, No such file or directory: missing.csv");
    EXPECT_EQ(setGainCalibration(1, 2, 3, nullptr), FAILED);
    std::ofstream("empty.csv").close();
    EXPECT_EQ(setGainCalibration(1, 2, 3, "empty.csv"), FAILED);
    EXPECT_EQ(last_error(), "Gain Calibration load error");
}

TEST_F(Probe_Setup, ConfigurationUploadsInSimulation) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(writeProbeConfiguration(1, 2, 3, true), SUCCESS);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(
        printed.ends_with("emulating 2 second init (ORBE_Controller_Library::writeProbeConfiguration)\n"));
    EXPECT_EQ(m_log.count(0, "slotID : 1, portID : 2, dockID : 3, readcheck : 1"), 1);
    EXPECT_EQ(m_log.count("SR upload status ok. (C3h)."), 2);
}

TEST_F(Probe_Setup, OperatingModeIsOnlyNamed) {
    const std::array<std::pair<int, std::string>, 4> modes{
        {{0, "RECORDING"}, {1, "CALIBRATION"}, {2, "DIGITAL_TEST"}, {3, "?"}}};
    for (const auto& [mode, name] : modes) {
        EXPECT_EQ(setOPMODE(1, 2, 3, static_cast<probe_opmode_t>(mode)), SUCCESS);
        expect_scope_and_line("setOPMODE", 0, "opmode : " + name + ", slotID : 1, portID : 2, dockID : 3");
    }
}

TEST_F(Probe_Setup, SelfTestSignalIsSwitched) {
    EXPECT_EQ(probe_set_bist_mode(2, true), SUCCESS);
    EXPECT_EQ(m_log.count(1, "portID : 2, enable : 1"), 1);
    EXPECT_TRUE(m_log.has_scope(1, "bist_pixel"));
    EXPECT_EQ(probe_set_bist_mode(2, false), SUCCESS);
    EXPECT_EQ(m_log.count(1, "2.Disable the HS oscillator"), 1);
    EXPECT_EQ(probe_set_bist_mode(9, false), SUCCESS);
}

TEST_F(Probe_Setup, ProbePartNumberIsCopiedWithinItsBounds) {
    std::array<char, 32> text{};
    EXPECT_EQ(readProbePN(1, 2, 3, text.data(), text.size()), SUCCESS);
    EXPECT_STREQ(text.data(), "PRB_1_4_0480_1");
    EXPECT_EQ(m_log.count(0, "slotID : 1, portID : 2, dockID : 3"), 1);
    EXPECT_EQ(m_log.count(0, "Reporting probe part number : PRB_1_4_0480_1"), 1);
    text.fill('x');
    EXPECT_EQ(readProbePN(1, 2, 3, text.data(), 4), SUCCESS);
    EXPECT_STREQ(text.data(), "PRB");
    EXPECT_EQ(text[4], 'x');
    EXPECT_EQ(readProbePN(1, 2, 3, text.data(), 0), SUCCESS);
    EXPECT_STREQ(text.data(), "PRB");
    EXPECT_EQ(readProbePN(1, 2, 3, nullptr, 10), SUCCESS);
}

TEST_F(Probe_Setup, ProbeSerialNumberIsLeftAloneInSimulation) {
    std::uint64_t number = 77;
    EXPECT_EQ(readProbeSN(1, 2, 3, &number), SUCCESS);
    EXPECT_EQ(number, 77U);
    EXPECT_EQ(m_log.count(0, "slotID : 1, portID : 2"), 1);
    EXPECT_EQ(readProbeSN(1, 2, 3, nullptr), SUCCESS);
}

TEST_F(Probe_Setup, HeadstagePartNumber) {
    EXPECT_EQ(openPort(0, 1), SUCCESS);
    std::array<char, 32> text{};
    EXPECT_EQ(readHSPN(1, 2, text.data(), text.size()), SUCCESS);
    EXPECT_STREQ(text.data(), "NP2_HS_30");
    EXPECT_EQ(m_log.count(0, "Reporting HS part number : NP2_HS_30"), 1);
    EXPECT_EQ(m_log.count("Invalid HS eeprom detected, defaulting to NP2_HS_30"), 0);
    EXPECT_EQ(readHSPN(1, 2, text.data(), 3), SUCCESS);
    EXPECT_STREQ(text.data(), "NP");
    EXPECT_EQ(readHSPN(1, 2, nullptr, 3), SUCCESS);
}

TEST_F(Probe_Setup, HeadstageIsReadOnceAPortHasBeenOpened) {
    std::array<char, 32> text{};
    testing::internal::CaptureStdout();
    m_waiter.on_wait([&](std::size_t) {
        if (m_waiter.count(1000ms) == 3) {
            std::thread([] { openPort(0, 1); }).join();
        }
    });
    EXPECT_EQ(readHSPN(0, 1, text.data(), text.size()), SUCCESS);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed, "Waiting for I2C_comm_initialization\nWaiting for I2C_comm_initialization\n"
                       "Waiting for I2C_comm_initialization\nskipping init for simulation mode\n");
    EXPECT_EQ(m_waiter.count(1000ms), 3U);
    EXPECT_STREQ(text.data(), "NP2_HS_30");
}

TEST_F(Probe_Setup, NobodyWaitsForAPortThatDoesNotExist) {
    std::array<char, 32> text{};
    for (const int port : {0, 5, -1}) {
        EXPECT_EQ(readHSPN(0, port, text.data(), text.size()), SUCCESS) << port;
    }
    EXPECT_EQ(m_waiter.count(1000ms), 0U);
}

TEST_F(Probe_Setup, SlotSixteenOpensThePortItself) {
    std::array<char, 32> text{};
    EXPECT_EQ(readHSPN(16, 3, text.data(), text.size()), SUCCESS);
    EXPECT_EQ(m_log.count("ORBE_Controller_Library::probe_init_part_1() np_port_id : 2"), 1);
    EXPECT_EQ(m_waiter.count(1000ms), 0U);
    EXPECT_EQ(readHSPN(0, 1, text.data(), text.size()), SUCCESS);
    EXPECT_EQ(m_waiter.count(1000ms), 0U) << "the link counts as opened";
}

TEST_F(Probe_Setup, DesignIsAnswered) {
    std::uint8_t count = 0;
    EXPECT_EQ(get_available_port_capability(0, &count), SUCCESS);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(get_available_port_capability(0, nullptr), SUCCESS);
    EXPECT_EQ(bs_get_fpga_design_label(), "000000c3");
    EXPECT_EQ(bs_get_fpga_design_build_date(), "00-00-2000");
    EXPECT_TRUE(m_log.has_scope(0, "bs_get_fpga_design_label"));
}

TEST_F(Probe_Setup, WithoutAnOpenBasestationEveryForwardedCallFails) {
    EXPECT_EQ(closeBS(0), SUCCESS);
    m_log.clear();
    int gain = 5;
    std::uint64_t number = 5;
    std::uint8_t count = 5;
    std::array<char, 32> text{};
    EXPECT_EQ(openPort(0, 1), FAILED);
    EXPECT_EQ(init(0, 1, 0), FAILED);
    EXPECT_EQ(selectElectrode(0, 1, 0, 0, 0, 0), FAILED);
    EXPECT_EQ(setGain(0, 1, 0, 0, 0, 0), FAILED);
    EXPECT_EQ(getGain(0, 1, 0, 0, &gain, &gain), FAILED);
    EXPECT_EQ(setReference(0, 1, 0, 0, 0, EXT_REF, 0), FAILED);
    EXPECT_EQ(setAPCornerFrequency(0, 1, 0, 0, false), FAILED);
    EXPECT_EQ(setADCCalibration(0, 1, "a.csv"), FAILED);
    EXPECT_EQ(setGainCalibration(0, 1, 0, "a.csv"), FAILED);
    EXPECT_EQ(writeProbeConfiguration(0, 1, 0, false), FAILED);
    EXPECT_EQ(probe_set_bist_mode(1, true), FAILED);
    EXPECT_EQ(clear_all_electrode_to_bank_assignments(0, 1), FAILED);
    EXPECT_EQ(readProbePN(0, 1, 0, text.data(), text.size()), FAILED);
    EXPECT_EQ(readProbeSN(0, 1, 0, &number), FAILED);
    EXPECT_EQ(get_available_port_capability(0, &count), FAILED);
    EXPECT_EQ(bs_get_fpga_design_label(), "");
    EXPECT_EQ(bs_get_fpga_design_build_date(), "");
    EXPECT_EQ(gain, 5);
    EXPECT_EQ(number, 5U);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(m_log.count(-2, "openPort : no basestation is open"), 1);
    EXPECT_EQ(m_log.count(-2, "bs_get_fpga_design_build_date : no basestation is open"), 1);
    EXPECT_EQ(readHSPN(0, 1, text.data(), text.size()), FAILED) << "nor does it wait for a port to be opened";
    EXPECT_STREQ(text.data(), "NP2_HS_30") << "the default is written all the same";
}

} // namespace
