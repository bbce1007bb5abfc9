// The exported functions over a back-end that records what reaches the registers.
#include "Fake_ORBE_Controller.h"
#include "Log_Capture.h"
#include "NeuropixAPI.h"
#include "Waiter_Guard.h"
#include "adapter/Adapter_State.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::npoe_adapter;
using namespace Pelgar::ORBE::test;
using Accesses = std::vector<Register_Access>;

class Hardware_Mode : public testing::Test {
protected:
    Hardware_Mode() {
        m_box->registers().set_value(0x0208, 0x4E500040);
        m_box->registers().set_value(0x0200, 0xF);
        *g_controller_factory = [this](bool simulation) {
            EXPECT_FALSE(simulation);
            return std::make_shared<ORBE_Controller_Library>(m_box, simulation);
        };
    }

    ~Hardware_Mode() override {
        closeBS(0);
        *g_controller_factory = {};
    }

    bool detected(int port) {
        bool present = false;
        EXPECT_EQ(detectHeadStage(0, port, &present), SUCCESS);
        return present;
    }

    std::shared_ptr<Fake_ORBE_Controller> m_box = std::make_shared<Fake_ORBE_Controller>();
    Log_Capture m_log;
    Waiter_Guard m_waiter;
};

TEST_F(Hardware_Mode, OpeningPreparesTheDriversBuffer) {
    EXPECT_EQ(openBS(0), SUCCESS);
    EXPECT_EQ(m_box->open_calls().size(), 1U);
    EXPECT_EQ(m_box->setup_calls().size(), 1U);
    EXPECT_EQ(m_log.count("Converter data structures prepared (0)"), 1);
}

TEST_F(Hardware_Mode, RefusedOpeningIsAnsweredAsFiveAndNothingElseIsTried) {
    m_box->set_open_result(false);
    EXPECT_EQ(openBS(0), 5);
    EXPECT_FALSE(m_log.has_scope(0, "check_and_switch_firmware_if_nec"));
}

TEST_F(Hardware_Mode, RefusedFirmwareSwitchIsAnsweredAsFiveAndNothingElseIsTried) {
    m_box->registers().set_value(0x0208, 0x11110040);
    m_box->registers().set_value(0x040C, 1);
    m_box->queue_open_results({true, false});
    EXPECT_EQ(openBS(0), 5);
    EXPECT_FALSE(m_log.has_scope(0, "pre_init"));
}

TEST_F(Hardware_Mode, MissingLockIsAnsweredAsFiveAndNothingElseIsTried) {
    m_box->registers().set_value(0x0200, 0);
    EXPECT_EQ(openBS(0), 5);
    EXPECT_EQ(m_box->setup_calls().size(), 0U);
    EXPECT_EQ(m_log.count("Converter data structures prepared (0)"), 0);
    EXPECT_EQ(getLastErrorMessage(nullptr, 0), 0U) << "an error was logged";
}

TEST_F(Hardware_Mode, BoxThatIsNotOpenIsNotTouched) {
    m_box->set_open_result(false);
    EXPECT_EQ(openBS(0), 5);
    EXPECT_EQ(openPort(0, 1), FAILED);
    EXPECT_EQ(init(0, 1, 0), FAILED);
    EXPECT_EQ(writeProbeConfiguration(0, 1, 0, true), FAILED);
    EXPECT_EQ(bs_get_fpga_design_label(), "");
    EXPECT_EQ(bs_get_fpga_design_build_date(), "");
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    EXPECT_FALSE(*g_pump_thread);
    EXPECT_FALSE(g_acquisition_running);
    EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(closeBS(0), SUCCESS);
    EXPECT_EQ(m_box->registers().accesses(), Accesses{});
    EXPECT_EQ(m_log.count(-2, "Exception caught while probe probe_init_part_1 : the box is not open"), 1);
    EXPECT_EQ(m_log.count(-2, "init : the box is not open"), 1);
    EXPECT_EQ(m_log.count(-2, "bs_get_fpga_design_label : the box is not open"), 1);
    EXPECT_EQ(m_log.count(-2, "start_acquisition : the box is not open"), 1);
    EXPECT_EQ(m_log.count(-1, "Skipping commands for disabling streams ( m_current_error_level > 0 )"), 1);
}

TEST_F(Hardware_Mode, WithoutABoxWhatNeedsNoRegisterAnswers) {
    m_box->set_open_result(false);
    EXPECT_EQ(openBS(0), 5);
    EXPECT_EQ(bistBS(0), SUCCESS);
    EXPECT_FALSE(detected(1));
    EXPECT_FALSE(detected(7));
    std::uint8_t ports = 7;
    EXPECT_EQ(get_available_port_capability(0, &ports), SUCCESS);
    EXPECT_EQ(ports, 0);
    EXPECT_EQ(probe_set_bist_mode(1, true), SUCCESS);
    EXPECT_TRUE(m_log.has_scope(0, "set_bist_signal_mode"));
    EXPECT_EQ(m_log.count(-2, "Exception caught during set_bist_signal_mode : the box is not open"), 1);
    EXPECT_EQ(clear_all_electrode_to_bank_assignments(0, 1), SUCCESS);
    EXPECT_EQ(m_log.count(0, "Clearing all channel to pixel assignments."), 1);
    EXPECT_EQ(closeBS(0), SUCCESS);
    EXPECT_TRUE(m_log.has_scope(0, "disable_streaming"));
    EXPECT_EQ(m_log.count(-1, "Skipping commands for disabling streams ( m_current_error_level > 0 )"), 1);
    EXPECT_EQ(m_box->registers().accesses(), Accesses{});
}

TEST_F(Hardware_Mode, WithoutABoxNobodyWaitsForAPortToBeOpened) {
    m_box->set_open_result(false);
    EXPECT_EQ(openBS(0), 5);
    for (const int slot : {0, 16, 0}) {
        std::array<char, 32> text{};
        EXPECT_EQ(readHSPN(slot, 1, text.data(), text.size()), FAILED) << slot;
        EXPECT_STREQ(text.data(), "NP2_HS_30") << slot;
    }
    EXPECT_EQ(m_waiter.waits().size(), 0U);
    EXPECT_EQ(m_box->registers().accesses(), Accesses{});
}

TEST_F(Hardware_Mode, OpeningAPortWithoutABoxCountsAsOpened) {
    m_box->set_open_result(false);
    EXPECT_EQ(openBS(0), 5);
    EXPECT_EQ(openPort(0, 1), FAILED);
    m_box->set_open_result(true);
    EXPECT_EQ(openBS(0), SUCCESS);
    std::array<char, 32> text{};
    readHSPN(0, 1, text.data(), text.size());
    EXPECT_EQ(m_waiter.count(std::chrono::milliseconds(1000)), 0U);
}

TEST_F(Hardware_Mode, BoxThatIsGoneAfterTheFirmwareSwitchIsNotTouched) {
    m_box->registers().set_value(0x0208, 0x11110040);
    m_box->registers().set_value(0x040C, 1);
    m_box->queue_open_results({true, false});
    EXPECT_EQ(openBS(0), 5);
    m_box->registers().clear_accesses();
    EXPECT_EQ(openPort(0, 1), FAILED);
    EXPECT_EQ(bs_get_fpga_design_build_date(), "");
    EXPECT_EQ(closeBS(0), SUCCESS);
    EXPECT_EQ(m_box->registers().accesses(), Accesses{});
}

TEST_F(Hardware_Mode, StartSwitchesAllPortsAndTheRhdStreamOnWithASoftTrigger) {
    EXPECT_EQ(openBS(0), SUCCESS);
    m_box->registers().clear_accesses();
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(m_box->registers().writes(),
              (Accesses{write_of(0x0000, 0x5CF), write_of(0x0000, 0x7CF), write_of(0x0000, 0x5CF),
                        write_of(0x1000, 2), write_of(0x1050, 0), write_of(0x1054, 0x12345678),
                        write_of(0x10A4, 1)}));
}

TEST_F(Hardware_Mode, StopAndCloseSwitchTheStreamsOff) {
    EXPECT_EQ(openBS(0), SUCCESS);
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    m_box->registers().clear_accesses();
    EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(m_box->registers().writes(), (Accesses{write_of(0x0000, 0x5C0), write_of(0x1050, 0)}));
    m_box->registers().clear_accesses();
    EXPECT_EQ(closeBS(0), SUCCESS);
    EXPECT_EQ(m_box->registers().writes(), (Accesses{write_of(0x0000, 0x5C0), write_of(0x1050, 0),
                                                     write_of(0x0000, 0), write_of(0x1000, 0)}));
}

TEST_F(Hardware_Mode, FailedReadEndsThePumpWithoutItsEndedFlag) {
    EXPECT_EQ(openBS(2), SUCCESS);
    m_box->queue_stream_error("c2h transfer failed");
    EXPECT_EQ(start_acquisition(2, 3), SUCCESS);
    (*g_pump_thread)->join();
    g_pump_thread->reset();
    EXPECT_EQ(m_log.count(-1, "pump_hw_data_to_demux exception catched : c2h transfer failed"), 1);
    EXPECT_EQ(m_log.count(0, "error in main pump thread (2,3)"), 1);
    EXPECT_EQ(m_log.count("End of main pump thread (2,3)"), 0);
    EXPECT_FALSE(g_pump_ended);
}

TEST_F(Hardware_Mode, RegistersThatFailAreLoggedAndTheAnswersStayTheSame) {
    EXPECT_EQ(openBS(0), SUCCESS);
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    m_box->set_write_error("register space lost");
    EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(m_log.count(-2, "stop_acquisition : register space lost"), 1);
    EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
    EXPECT_EQ(m_log.count(-2, "start_acquisition : register space lost"), 1);
    EXPECT_FALSE(g_acquisition_running);
    EXPECT_EQ(closeBS(0), SUCCESS);
    EXPECT_EQ(m_log.count(-2, "closeBS : register space lost"), 1);
}

TEST_F(Hardware_Mode, HeadstagesAreThoseThatTheDesignOffersAndThatLocked) {
    m_box->registers().set_value(0x0208, 0x4E500020);
    m_box->registers().set_value(0x0200, 0xFF);
    EXPECT_EQ(openBS(0), SUCCESS);
    EXPECT_TRUE(detected(1));
    EXPECT_TRUE(detected(2));
    EXPECT_FALSE(detected(3));
    EXPECT_FALSE(detected(4));
    m_box->registers().set_value(0x0208, 0x4E500040);
    m_box->registers().set_value(0x0200, 0xA);
    EXPECT_EQ(openBS(0), SUCCESS);
    EXPECT_FALSE(detected(1));
    EXPECT_TRUE(detected(2));
    EXPECT_FALSE(detected(3));
    EXPECT_TRUE(detected(4));
}

} // namespace
