// Test support, controller. A controller in simulation mode, opened but without a stream, as the self tests
// find it, and a host's listeners on it.
#pragma once

#include "Self_Test_Recordings.h"

#include "Log_Capture.h"
#include "Printed.h"
#include "Waiter_Guard.h"
#include "controller/C_ORBE_Controller_Library.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

// What a host would receive of a port.
class Host_Listener : public demux::I_L2_Demux_CH_Results {
public:
    void publish_ap_ch_data(std::uint16_t (&)[384]) override { ++ap_sets; }

    void publish_lp_ch_data(std::uint16_t (&)[384]) override {}

    std::atomic<unsigned> ap_sets{0};
};

class Host_RHD_Listener : public demux::I_RHD_Frame_Listener {
public:
    void publish_rhd_frame(demux::RHD_Frame& frame) override {
        ++frames;
        timestamps.push_back(frame.timestamp);
    }

    std::atomic<unsigned> frames{0};
    std::vector<std::uint32_t> timestamps; // to be looked at when everything has been delivered
};

class Self_Test_Fixture : public testing::Test {
protected:
    static constexpr unsigned port = 1;

    Self_Test_Fixture() {
        EXPECT_TRUE(m_controller->open());
        EXPECT_TRUE(m_controller->pre_init(true));
        m_controller->set_self_test_directory("recordings");
        std::filesystem::create_directory("recordings");
        for (unsigned index = 0; index < 4; ++index) {
            m_controller->set_NP_aqustion_listener(m_host[index], index, false);
        }
        m_controller->set_RHD_aqustion_listener(m_host_rhd);
    }

    // What was printed to standard output, without the lines that worker threads put in where they like.
    static std::string without_worker_lines(const std::string& printed) {
        std::istringstream lines(printed);
        std::string kept;
        for (std::string line; std::getline(lines, line);) {
            if (line.find(" worker, queue element count : ") == std::string::npos &&
                line.find("high_water_mark : ") == std::string::npos) {
                kept += line + '\n';
            }
        }
        return kept;
    }

    unsigned host_ap_sets() const {
        return m_host[0]->ap_sets + m_host[1]->ap_sets + m_host[2]->ap_sets + m_host[3]->ap_sets;
    }

    // The second piece of a recording that is pumped throws std::runtime_error("pump lost").
    void lose_second_pump() {
        m_waiter.on_wait([this](std::size_t) {
            constexpr std::chrono::milliseconds pump_wait(10);
            if (m_waiter.waits().back() == pump_wait && m_waiter.count(pump_wait) == 2) {
                throw std::runtime_error("pump lost");
            }
        });
    }

    // Streams what the controller has prepared once to its end, as an acquisition does.
    void acquire() {
        m_controller->enable_streaming(true, {0, 1, 2, 3}, true, {}, true);
        while (m_controller->pump_data_to_demux()) {
        }
        m_controller->disable_streaming();
        m_controller->wait_until_delivered();
    }

    Log_Capture m_log;
    Waiter_Guard m_waiter;
    std::array<std::shared_ptr<Host_Listener>, 4> m_host{
        std::make_shared<Host_Listener>(), std::make_shared<Host_Listener>(),
        std::make_shared<Host_Listener>(), std::make_shared<Host_Listener>()};
    std::shared_ptr<Host_RHD_Listener> m_host_rhd = std::make_shared<Host_RHD_Listener>();
    std::unique_ptr<ORBE_Controller_Library> m_controller = std::make_unique<ORBE_Controller_Library>(true);
};

} // namespace Pelgar::ORBE::test
