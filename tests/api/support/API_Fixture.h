// Test support: the exported functions in simulation mode, inside the test's own working directory and
// without real waits.
#pragma once

#include "Log_Capture.h"
#include "NeuropixAPI.h"
#include "Waiter_Guard.h"
#include "adapter/Adapter_State.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::test {

class API_Fixture : public testing::Test {
protected:
    static constexpr std::size_t mebibyte = 1U << 20U;
    static constexpr std::size_t waits_until_held = 8;
    static constexpr std::chrono::milliseconds pump_wait{10};

    // After some blocks the pump is held until it is told to stop: it must not come to the recording's end,
    // after which a stop waits for ever, however long the test takes to stop it.
    API_Fixture() {
        m_waiter.on_wait([this, test_thread = std::this_thread::get_id()](std::size_t) {
            if (std::this_thread::get_id() != test_thread && m_waiter.count(pump_wait) >= waits_until_held) {
                while (!npoe_adapter::g_stop_requested) {
                    std::this_thread::yield();
                }
            }
        });
    }

    ~API_Fixture() override { Neuropixels::closeBS(0); }

    // Puts the library into simulation mode on the file that `path` names.
    static void select_simulation(const std::string& path) {
        std::ofstream("ORBE_DFGMZ_ADAPTER_SIM", std::ios::trunc) << path << "\n";
    }

    // A recording whose every transfer is refused by the demultiplexer, so that only the pump is at work.
    static std::string write_recording_without_rows(std::size_t size) {
        const std::string path = std::filesystem::absolute("no_rows.bin").string();
        const std::vector<char> zeros(size);
        std::ofstream(path, std::ios::binary).write(zeros.data(), static_cast<std::streamsize>(size));
        return path;
    }

    static void open_simulation(std::size_t recording_size = 2 * waits_until_held * mebibyte) {
        select_simulation(write_recording_without_rows(recording_size));
        ASSERT_EQ(Neuropixels::openBS(0), Neuropixels::SUCCESS);
    }

    // Blocks until a line with exactly this text has been logged.
    void wait_for_log(const std::string& text) const {
        while (m_log.count(text) == 0) {
            std::this_thread::yield();
        }
    }

    // Returns when all threads that opening has started have logged their beginning.
    void wait_for_quiet_log() const {
        while (m_log.count("NP Worker thread started") < 4 || m_log.count("RHD Worker thread started") < 1 ||
               !m_log.has_scope(0, "run")) {
            std::this_thread::yield();
        }
    }

    Log_Capture m_log;
    Waiter_Guard m_waiter;
};

} // namespace Pelgar::ORBE::test
