// The self tests and EEPROM dumps of a port, in hardware mode and in simulation.
#include "Box_Fixture.h"

#include "controller/C_ORBE_Controller_Library.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Frames = std::vector<Link_Frame>;
using Headstage = Virtual_Headstage;

constexpr unsigned port = 2;

Link_Frame write_frame(std::uint8_t device, std::uint8_t reg, std::uint8_t value) {
    return {0x79, device, reg, 1, value};
}

Link_Frame read_frame(std::uint8_t device, std::uint8_t reg) {
    return {0x79, static_cast<std::uint8_t>(device | 1U), reg, 1};
}

std::vector<std::uint8_t> content_of(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class Self_Tests : public Box_Fixture {
protected:
    Self_Tests() {
        open();
        EXPECT_EQ(Neuropixels::openPort(slot, port + 1), Neuropixels::SUCCESS);
        m_headstage.forget_frames();
        m_box->forget_accesses();
        m_log.clear();
    }

    ORBE_Controller_Library& controller() { return *npoe_adapter::current_controller(); }

    std::uint8_t asic(std::uint8_t reg) const { return m_headstage.value(Headstage::probe_asic, reg); }

    Headstage& m_headstage = m_box->headstage(port);
};

TEST_F(Self_Tests, SignalModeFeedsThePixelsAndGoesBackToRecording) {
    EXPECT_TRUE(controller().set_bist_signal_mode(port, true));
    EXPECT_EQ(asic(0x00), 0x60);
    EXPECT_EQ(asic(0x02), 0x90);
    EXPECT_TRUE(controller().set_bist_signal_mode(port, false));
    EXPECT_EQ(asic(0x00), 0x40);
    EXPECT_EQ(asic(0x02), 0x00);
}

TEST_F(Self_Tests, PrbsErrorsAreCounted) {
    m_headstage.set(Headstage::deserializer, 0x04, 0x87);
    m_headstage.set(Headstage::deserializer, 0x13, 42);
    EXPECT_TRUE(controller().bist_start_PBRS(port));
    EXPECT_EQ(m_headstage.value(Headstage::deserializer, 0x04), 0xA7);
    EXPECT_EQ(m_headstage.value(Headstage::serializer, 0x04), 0xA3);
    int errors = -1;
    EXPECT_TRUE(controller().bist_stop_PBRS(port, &errors));
    EXPECT_EQ(errors, 42);
    EXPECT_EQ(m_headstage.value(Headstage::deserializer, 0x04), 0x87);
    EXPECT_EQ(m_headstage.value(Headstage::serializer, 0x04), 0x83);
    EXPECT_TRUE(controller().bist_stop_PBRS(port, nullptr));
}

TEST_F(Self_Tests, PrbsThatDoesNotEndIsAFailure) {
    EXPECT_TRUE(controller().bist_start_PBRS(port));
    m_headstage.forget_frames();
    m_headstage.fail_once(3, Link_Fault::lost_write); // the deserializer's way back
    int errors = -1;
    EXPECT_FALSE(controller().bist_stop_PBRS(port, &errors));
    EXPECT_EQ(errors, -1);
    EXPECT_EQ(
        m_log.count(-2, "Exception caught during bist_stop_PBRS : stop_pbrs_test : Unexpected response 2"),
        1);
}

TEST_F(Self_Tests, ShiftRegistersAreUploadedAndChecked) {
    EXPECT_TRUE(controller().bist_Probe_SR(port));
    EXPECT_EQ(m_log.count("SR upload status ok. (80h)."), 2);
    m_headstage.forget_frames();
    m_headstage.fail_once(500, Link_Fault::lost_write);
    EXPECT_FALSE(controller().bist_Probe_SR(port));
    EXPECT_EQ(m_log.count(-2, "Exception caught during bist_Probe_SR : SR upload status not ok"), 1);
}

TEST_F(Self_Tests, EepromsAreReadTwiceAndCompared) {
    EXPECT_TRUE(controller().bist_Eeproms(port));
    Frames expected;
    for (const std::uint8_t device : {Headstage::probe_eeprom, Headstage::headstage_eeprom}) {
        for (int pass = 0; pass < 2; ++pass) {
            for (std::uint8_t reg = 0; reg < 16; ++reg) {
                expected.push_back(read_frame(device, reg));
            }
        }
    }
    EXPECT_EQ(m_headstage.frames(), expected);
}

TEST_F(Self_Tests, EepromThatDoesNotReadTheSameTwiceIsNamed) {
    m_headstage.flicker(Headstage::headstage_eeprom, 15);
    EXPECT_FALSE(controller().bist_Eeproms(port));
    EXPECT_EQ(m_log.count(-2, "eeprom at adres : a4 does not read the same twice"), 1);
    m_headstage.flicker(Headstage::probe_eeprom, 0);
    EXPECT_FALSE(controller().bist_Eeproms(port));
    EXPECT_EQ(m_log.count(-2, "eeprom at adres : a0 does not read the same twice"), 1);
}

TEST_F(Self_Tests, ProbeRegisterIsWrittenReadBackAndRestored) {
    m_headstage.set(Headstage::probe_asic, 0x03, 0x12);
    EXPECT_TRUE(controller().bist_IIC(port));
    constexpr std::uint8_t probe = Headstage::probe_asic;
    EXPECT_EQ(m_headstage.frames(),
              (Frames{read_frame(probe, 3), write_frame(probe, 3, 0x55), read_frame(probe, 3),
                      write_frame(probe, 3, 0xAA), read_frame(probe, 3), write_frame(probe, 3, 0x12)}));
    EXPECT_EQ(asic(0x03), 0x12);
}

TEST_F(Self_Tests, ProbeRegisterThatDoesNotTakeAPatternIsNamedAndRestored) {
    m_headstage.set(Headstage::probe_asic, 0x03, 0x12);
    m_headstage.fail_once(4, Link_Fault::lost_write);
    EXPECT_FALSE(controller().bist_IIC(port));
    EXPECT_EQ(m_log.count(-2, "probe register 03 reads 55 instead of aa"), 1);
    EXPECT_EQ(asic(0x03), 0x12);
}

TEST_F(Self_Tests, ProbeRegisterIsRestoredAlsoAfterALinkError) {
    for (std::size_t transaction = 1; transaction <= 5; ++transaction) {
        m_headstage.set(Headstage::probe_asic, 0x03, 0x12);
        m_headstage.forget_frames();
        m_log.clear();
        m_headstage.fail_once(transaction, Link_Fault::wrong_acknowledge);
        EXPECT_FALSE(controller().bist_IIC(port)) << transaction;
        EXPECT_EQ(asic(0x03), 0x12) << transaction;
        const bool reads = transaction % 2 == 1;
        EXPECT_EQ(m_log.count(-2, std::string("Exception caught during bist_IIC : ") +
                                      (reads ? "qbsc_readI2C error" : "qbsc_writeI2C ACK error")),
                  1)
            << transaction;
        m_headstage.clear_faults();
    }
}

TEST_F(Self_Tests, LinkLockIsReadAfresh) {
    EXPECT_TRUE(controller().bist_HB(port));
    m_box->lock_at_look(port, std::nullopt);
    EXPECT_FALSE(controller().bist_HB(port));
    EXPECT_EQ(m_log.count(-2, "the link of port 2 is not locked"), 1);
}

TEST_F(Self_Tests, EveryTestRoutesTheLinkToItsPortFirst) {
    for (const unsigned other : {0U, 1U, 3U}) {
        m_box->forget_accesses();
        EXPECT_TRUE(controller().bist_Eeproms(other));
        EXPECT_EQ((m_box->writes().front().value >> 4U) & 3U, other);
    }
    EXPECT_EQ(m_headstage.frames(), Frames{}) << "another port's probe is left alone";
}

TEST_F(Self_Tests, PortsThatDoNotExistFailWithALine) {
    int errors = 0;
    EXPECT_FALSE(controller().set_bist_signal_mode(9, true));
    EXPECT_FALSE(controller().bist_start_PBRS(9));
    EXPECT_FALSE(controller().bist_stop_PBRS(9, &errors));
    EXPECT_FALSE(controller().bist_Probe_SR(9));
    EXPECT_FALSE(controller().bist_Eeproms(9));
    EXPECT_FALSE(controller().bist_IIC(9));
    EXPECT_FALSE(controller().bist_HB(9));
    EXPECT_FALSE(controller().dump_eeprom(9, "dump.bin", 4));
    EXPECT_EQ(m_log.count(-2, "Exception caught during bist_HB : assign_uart_to_np_channel invalid"), 1);
    EXPECT_EQ(m_log.count(-2, "Exception caught during eeprom dump : assign_uart_to_np_channel invalid"), 1);
}

TEST_F(Self_Tests, DumpsHoldTheBytesOfTheirEeprom) {
    m_headstage.set(Headstage::probe_eeprom, 255, 0x77);
    m_headstage.set(Headstage::headstage_eeprom, 2, 0x99);
    EXPECT_TRUE(controller().dump_eeprom(port, "probe.bin", 256));
    EXPECT_TRUE(controller().dump_flex_eeprom(port, "flex.bin", 4));
    EXPECT_TRUE(controller().dump_hs_eeprom(port, "headstage.bin", 3));
    EXPECT_TRUE(controller().dump_hs_eeprom(port, "nothing.bin", 0));
    EXPECT_EQ(m_log.count(0, "Reading 256 bytes from eeprom at adres : a0 to file probe.bin"), 1);
    EXPECT_EQ(m_log.count(0, "Reading 4 bytes from eeprom at adres : a0 to file flex.bin"), 1);
    EXPECT_EQ(m_log.count(0, "Reading 3 bytes from eeprom at adres : a4 to file headstage.bin"), 1);
    const auto probe = content_of("probe.bin");
    ASSERT_EQ(probe.size(), 256U);
    EXPECT_EQ(probe[0], 0x88) << "the serial number's lowest byte";
    EXPECT_EQ(probe[255], 0x77);
    EXPECT_EQ(content_of("flex.bin"), std::vector<std::uint8_t>(probe.begin(), probe.begin() + 4));
    EXPECT_EQ(content_of("headstage.bin"), (std::vector<std::uint8_t>{0x05, 0x02, 0x99}));
    EXPECT_TRUE(std::filesystem::exists("nothing.bin"));
}

TEST_F(Self_Tests, DumpsThatCannotBeMadeFail) {
    EXPECT_FALSE(controller().dump_eeprom(port, "dump.bin", 257));
    EXPECT_EQ(m_log.count(-2, "an eeprom holds 256 bytes"), 1);
    EXPECT_FALSE(controller().dump_eeprom(port, "nowhere/dump.bin", 4));
    EXPECT_EQ(m_log.count(-2, "eeprom dump cannot be written to file nowhere/dump.bin"), 1);
    EXPECT_FALSE(controller().dump_eeprom(port, nullptr, 4));
    m_headstage.fail_from(1, Link_Fault::silence);
    m_headstage.forget_frames();
    EXPECT_FALSE(controller().dump_eeprom(port, "dump.bin", 4));
    EXPECT_EQ(m_log.count(-2, "Exception caught during eeprom dump : UART_Module recv timeout"), 1);
    EXPECT_FALSE(std::filesystem::exists("dump.bin"));
}

TEST(Self_Tests_In_Simulation, ThoseThatOnlyReadSucceedAndSayThatTheyDidNotTest) {
    const Log_Capture log;
    const Waiter_Guard waiter;
    ORBE_Controller_Library controller(true);
    ASSERT_TRUE(controller.open());
    ASSERT_TRUE(controller.pre_init(true));
    EXPECT_TRUE(controller.bist_Eeproms(0));
    EXPECT_TRUE(controller.bist_IIC(0));
    EXPECT_TRUE(controller.bist_HB(0));
    EXPECT_EQ(log.count(0, "bist_Eeproms succeeds without a test in simulation mode"), 1);
    EXPECT_EQ(log.count(0, "bist_IIC succeeds without a test in simulation mode"), 1);
    EXPECT_EQ(log.count(0, "bist_HB succeeds without a test in simulation mode"), 1);
    EXPECT_TRUE(controller.bist_Probe_SR(0));
    EXPECT_TRUE(controller.set_bist_signal_mode(0, true));
}

} // namespace
