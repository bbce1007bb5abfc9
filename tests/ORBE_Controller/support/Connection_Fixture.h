// Test support: an open connection to the recording back-end, without a controller and without real waits.
#pragma once

#include "Fake_ORBE_Controller.h"
#include "Log_Capture.h"
#include "Printed.h"
#include "Register_Recorder.h"
#include "Waiter_Guard.h"
#include "connection/Box_Connection.h"

#include <gtest/gtest.h>

#include <memory>

namespace Pelgar::ORBE::test {

class Connection_Fixture : public testing::Test {
protected:
    explicit Connection_Fixture(bool simulation = false) : m_connection(simulation) {
        m_connection.attach(m_box);
        EXPECT_TRUE(m_connection.open());
    }

    std::shared_ptr<Fake_ORBE_Controller> m_box = std::make_shared<Fake_ORBE_Controller>();
    Register_Recorder& m_registers = m_box->registers();
    Log_Capture m_log;
    Waiter_Guard m_waiter;
    Box_Connection m_connection;
};

} // namespace Pelgar::ORBE::test
