// Test support, box road. The exported functions in hardware mode on a virtual box, without real waits.
#pragma once

#include "Virtual_Box_Controller.h"

#include "Log_Capture.h"
#include "Printed.h"
#include "Waiter_Guard.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

namespace Pelgar::ORBE::test {

class Box_Fixture : public testing::Test {
protected:
    Box_Fixture() {
        *npoe_adapter::g_controller_factory = [box = m_box](bool simulation) {
            EXPECT_FALSE(simulation);
            return std::make_shared<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(box),
                                                             false);
        };
        forget_ttl_inputs();
        // Log lines have their own capture; standard error is left to what the library prints there.
        loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    }

    ~Box_Fixture() override {
        m_box->stream().set_limit(DMA_Source::unlimited);
        Neuropixels::closeBS(slot);
        *npoe_adapter::g_controller_factory = {};
        EXPECT_EQ(m_box->accesses_while_closed(), 0U) << "the box was touched without a connection to it";
        EXPECT_EQ(m_box->reads_of_empty_uart(), 0U);
    }

    // The library keeps the last state of the TTL inputs for as long as the process lives, over tests that
    // run in the same one: back to what a new process begins with.
    static void forget_ttl_inputs() {
        npoe_adapter::RHD_Converter converter;
        demux::RHD_Frame frame{};
        converter.publish_rhd_frame(frame);
    }

    static recording::Recording_Options stream_options() {
        recording::Recording_Options options;
        options.seed = 2024;
        return options;
    }

    void open() {
        ASSERT_EQ(Neuropixels::openBS(slot), Neuropixels::SUCCESS);
        m_box->forget_accesses();
    }

    static Error_Level error_level() { return npoe_adapter::current_controller()->get_current_error_level(); }

    // Blocks until a line with exactly this text has been logged.
    void wait_for_log(const std::string& text) const {
        while (m_log.count(text) == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    static constexpr int slot = 2;

    Log_Capture m_log;
    Waiter_Guard m_waiter;
    std::shared_ptr<Virtual_Box> m_box = std::make_shared<Virtual_Box>(stream_options());
};

} // namespace Pelgar::ORBE::test
