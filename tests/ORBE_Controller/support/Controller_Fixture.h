// Test support: a controller in hardware mode on the recording back-end, without real waits.
#pragma once

#include "Fake_ORBE_Controller.h"
#include "Log_Capture.h"
#include "Printed.h"
#include "Register_Recorder.h"
#include "Waiter_Guard.h"
#include "controller/C_ORBE_Controller_Library.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Pelgar::ORBE {

// Reaches the parts behind the controller.
struct Controller_Test_Peer {
    static Box_Connection& box(ORBE_Controller_Library& controller) { return controller.m_box; }

    static Box_Stream& stream(ORBE_Controller_Library& controller) { return controller.m_stream; }
};

} // namespace Pelgar::ORBE

namespace Pelgar::ORBE::test {

class Controller_Fixture : public testing::Test {
protected:
    static constexpr std::uint32_t configuration = 0x0000;
    static constexpr std::uint32_t build_timestamp = 0x0008;
    static constexpr std::uint32_t pll_lock = 0x0200;
    static constexpr std::uint32_t signature = 0x0208;
    static constexpr std::uint32_t temperature = 0x0A00;
    static constexpr std::uint32_t efuse = 0x1600;

    Controller_Fixture() {
        m_registers.set_value(signature, 0x4E500040);
        m_registers.set_value(pll_lock, 0x1);
    }

    std::shared_ptr<Fake_ORBE_Controller> m_box = std::make_shared<Fake_ORBE_Controller>();
    Register_Recorder& m_registers = m_box->registers();
    Log_Capture m_log;
    Waiter_Guard m_waiter;
    std::unique_ptr<ORBE_Controller_Library> m_controller =
        std::make_unique<ORBE_Controller_Library>(m_box, false);
};

// The same with the connection open, without which there are no registers.
class Opened_Controller_Fixture : public Controller_Fixture {
protected:
    Opened_Controller_Fixture() { EXPECT_TRUE(m_controller->open()); }
};

} // namespace Pelgar::ORBE::test
