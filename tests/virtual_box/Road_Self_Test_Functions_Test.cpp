// The self-test functions of the API on a virtual box: which port they test, what they answer, what they log.
#include "Box_Fixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

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

    // The function opens its scope at verbosity 0 and logs nothing else itself.
    void expect_scope(const std::string& name) {
        std::vector<std::string> own;
        for (const Log_Line& line : m_log.lines()) {
            if (line.file == "NeuropixAPI_bist.cpp") {
                own.push_back(std::to_string(line.verbosity) + " " + line.text);
            }
        }
        EXPECT_EQ(own, (std::vector<std::string>{"0 { " + name, "0 } " + name}));
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

TEST_F(Self_Test_Functions, TestPattern) {
    NP_ErrorCode result = NOTIMPLEMENTED;
    const Printed printed = printed_by([&] { result = bistPSB(slot, port, 0); });
    EXPECT_EQ(result, SUCCESS);
    EXPECT_NE(printed.out.find("End of Bist PSB test\n"), std::string::npos);
    EXPECT_EQ(m_headstage.value(Headstage::probe_asic, 0x00), 0x50) << "the port's probe was put to the test";
    expect_scope("bistPSB");
}

TEST_F(Self_Test_Functions, TestPatternNeedsTheStreamForItself) {
    EXPECT_EQ(start_acquisition(slot, port), SUCCESS);
    m_log.clear();
    EXPECT_EQ(bistPSB(slot, port, 0), FAILED);
    EXPECT_EQ(m_log.count(-2, "bistPSB needs the stream, which an acquisition uses"), 1);
    EXPECT_TRUE(m_headstage.frames().empty());
}

TEST_F(Self_Test_Functions, TestPatternIsRefusedUntilAStopHasJoinedThePump) {
    std::atomic<bool> reading{false};
    std::atomic<bool> go_on{false};
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    m_box->stream().set_observer([&](std::span<const std::uint8_t>) {
        reading = true;
        while (!go_on && std::chrono::steady_clock::now() < patience) {
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(start_acquisition(slot, port), SUCCESS);
    while (!reading) {
        std::this_thread::yield();
    }
    std::thread stopping([] { EXPECT_EQ(stop_acquisition(slot, port), SUCCESS); });
    wait_for_log("Waiting main pump to stop. (2)");
    EXPECT_EQ(m_box->value(Virtual_Box::configuration) & 0xFU, 0U) << "the streams are off";
    EXPECT_EQ(bistPSB(slot, port, 0), FAILED);
    EXPECT_EQ(m_log.count(-2, "bistPSB needs the stream, which an acquisition uses"), 1);
    EXPECT_TRUE(m_headstage.frames().empty());
    go_on = true;
    stopping.join();
    m_box->stream().set_observer({});
    EXPECT_EQ(bistPSB(slot, port, 0), SUCCESS);
}

TEST_F(Self_Test_Functions, AcquisitionStartsWhenTheTestOfTheStreamIsOver) {
    constexpr std::uint32_t all_ports = 0xF;
    const auto streams = [&] { return m_box->value(Virtual_Box::configuration) & all_ports; };
    std::thread starting;
    m_box->stream().set_observer([&](std::span<const std::uint8_t>) {
        if (!starting.joinable()) {
            starting = std::thread([] { EXPECT_EQ(start_acquisition(slot, port), SUCCESS); });
            wait_for_log("starting acquisition : slotID : 2, portID : 3");
            // Long enough for a start that does not wait.
            for (int look = 0; look < 100; ++look) {
                EXPECT_EQ(streams(), 1U << tested_port);
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
    });
    m_box->forget_accesses();
    EXPECT_EQ(bistPSB(slot, port, 0), SUCCESS);
    starting.join();
    m_box->stream().set_observer({});
    std::vector<std::uint32_t> switched;
    for (const std::uint32_t value : m_box->writes_to(Virtual_Box::configuration)) {
        if (switched.empty() || switched.back() != (value & all_ports)) {
            switched.push_back(value & all_ports);
        }
    }
    EXPECT_EQ(switched, (std::vector<std::uint32_t>{0, 1U << tested_port, 0, all_ports}));
    EXPECT_EQ(stop_acquisition(slot, port), SUCCESS);
}

TEST_F(Self_Test_Functions, StopDuringTheTestOfTheStreamWaitsAndDoesNothing) {
    std::thread stopping;
    m_box->stream().set_observer([&](std::span<const std::uint8_t>) {
        if (!stopping.joinable()) {
            stopping = std::thread([] { EXPECT_EQ(stop_acquisition(slot, port), SUCCESS); });
            wait_for_log("slotID : 2, portID : 3");
        }
    });
    m_log.clear();
    EXPECT_EQ(bistPSB(slot, port, 0), SUCCESS);
    stopping.join();
    EXPECT_EQ(m_log.count("Stopping main stream. (2)"), 0);
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

TEST_F(Self_Test_Functions, PrbsThatDoesNotEndIsWrittenAsNoErrors) {
    EXPECT_EQ(bistStartPRBS(slot, port), SUCCESS);
    m_headstage.forget_frames();
    m_headstage.fail_once(3, Link_Fault::lost_write);
    int errors = -1;
    EXPECT_EQ(bistStopPRBS(slot, port, &errors), FAILED);
    EXPECT_EQ(errors, 0);
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
        EXPECT_EQ(bistPSB(slot, none, 0), FAILED);
        EXPECT_EQ(bistStartPRBS(slot, none), FAILED);
        EXPECT_EQ(bistStopPRBS(slot, none, nullptr), FAILED);
    }
}

} // namespace
