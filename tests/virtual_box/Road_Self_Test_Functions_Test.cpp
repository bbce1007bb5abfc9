// The self-test functions of the API on a virtual box: which port they test, what they answer, what they log.
#include "Box_Fixture.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Headstage = Virtual_Headstage;

constexpr unsigned tested_port = 2; // counted from 0

class Self_Test_Functions : public Box_Fixture {
protected:
    Self_Test_Functions() {
        open();
        EXPECT_EQ(openPort(slot, port), SUCCESS);
        m_headstage.forget_frames();
        m_log.clear();
    }

    // The first line of the log is the function's scope; the function itself logs nothing else.
    void expect_scope(const std::string& name) {
        const auto lines = m_log.lines();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.front().verbosity, 0);
        EXPECT_EQ(lines.front().text, "{ " + name);
        EXPECT_EQ(lines.back().text, "} " + name);
        for (const Log_Line& line : lines) {
            EXPECT_TRUE(line.file != "NeuropixAPI_bist.cpp" || line.text.ends_with(" " + name)) << line.text;
        }
        m_log.clear();
    }

    static constexpr int port = tested_port + 1;
    Headstage& m_headstage = m_box->headstage(tested_port);
};

TEST_F(Self_Test_Functions, BasestationPasses) {
    EXPECT_EQ(bistBS(slot), SUCCESS);
    expect_scope("bistBS");
}

TEST_F(Self_Test_Functions, Eeproms) {
    EXPECT_EQ(bistEEPROM(slot, port), SUCCESS);
    expect_scope("bistEEPROM");
    EXPECT_FALSE(m_headstage.frames().empty());
    m_headstage.flicker(Headstage::headstage_eeprom, 15);
    EXPECT_EQ(bistEEPROM(slot, port), FAILED);
    expect_scope("bistEEPROM");
}

TEST_F(Self_Test_Functions, ProbeRegister) {
    EXPECT_EQ(bistI2CMM(slot, port, 0), SUCCESS);
    expect_scope("bistI2CMM");
    m_headstage.forget_frames();
    m_headstage.fail_once(4, Link_Fault::lost_write);
    EXPECT_EQ(bistI2CMM(slot, port, 0), FAILED);
    expect_scope("bistI2CMM");
}

TEST_F(Self_Test_Functions, ShiftRegisters) {
    EXPECT_EQ(bistSR(slot, port, 0), SUCCESS);
    expect_scope("bistSR");
    m_headstage.forget_frames();
    m_headstage.fail_once(500, Link_Fault::lost_write);
    EXPECT_EQ(bistSR(slot, port, 0), FAILED);
    expect_scope("bistSR");
}

TEST_F(Self_Test_Functions, PrbsErrorsAreWrittenToTheHost) {
    m_headstage.set(Headstage::deserializer, 0x13, 42);
    EXPECT_EQ(bistStartPRBS(slot, port), SUCCESS);
    expect_scope("bistStartPRBS");
    int errors = -1;
    EXPECT_EQ(bistStopPRBS(slot, port, &errors), SUCCESS);
    expect_scope("bistStopPRBS");
    EXPECT_EQ(errors, 42);
    EXPECT_EQ(bistStartPRBS(slot, port), SUCCESS);
    EXPECT_EQ(bistStopPRBS(slot, port, nullptr), SUCCESS);
}

TEST_F(Self_Test_Functions, PrbsThatDoesNotEndWritesNothing) {
    EXPECT_EQ(bistStartPRBS(slot, port), SUCCESS);
    m_headstage.forget_frames();
    m_headstage.fail_once(3, Link_Fault::lost_write);
    int errors = -1;
    EXPECT_EQ(bistStopPRBS(slot, port, &errors), FAILED);
    EXPECT_EQ(errors, -1);
}

TEST_F(Self_Test_Functions, HeadstageLink) {
    EXPECT_EQ(bistHB(slot, port, 0), SUCCESS);
    expect_scope("bistHB");
    m_box->lock_at_look(tested_port, std::nullopt);
    EXPECT_EQ(bistHB(slot, port, 0), FAILED);
    expect_scope("bistHB");
    EXPECT_EQ(bistHB(slot, port - 1, 0), SUCCESS);
}

TEST_F(Self_Test_Functions, PortsThatThereAreNotFail) {
    for (const int none : {-1, 0, 5}) {
        EXPECT_EQ(bistEEPROM(slot, none), FAILED);
        EXPECT_EQ(bistHB(slot, none, 0), FAILED);
        EXPECT_EQ(bistI2CMM(slot, none, 0), FAILED);
        EXPECT_EQ(bistSR(slot, none, 0), FAILED);
        EXPECT_EQ(bistStartPRBS(slot, none), FAILED);
        EXPECT_EQ(bistStopPRBS(slot, none, nullptr), FAILED);
    }
}

} // namespace
