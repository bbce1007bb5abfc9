// What the virtual box sends, captured in both of the library's ways of presenting it.
#include "Capture_Files.h"

#include "Log_Capture.h"
#include "Printed.h"
#include "Virtual_Box_Controller.h"
#include "Waiter_Guard.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class Capture_From_Box : public testing::Test {
protected:
    Capture_From_Box() {
        *npoe_adapter::g_controller_factory = [box = m_box](bool) {
            return std::make_shared<ORBE_Controller_Library>(std::make_shared<Virtual_Box_Controller>(box),
                                                             false);
        };
        loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
        m_box->stream().set_observer([this](std::span<const std::uint8_t> bytes) {
            const std::lock_guard lock(m_mutex);
            m_sent.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        });
    }

    ~Capture_From_Box() override {
        m_box->stream().set_limit(DMA_Source::unlimited);
        closeBS(m_slot);
        *npoe_adapter::g_controller_factory = {};
    }

    static recording::Recording_Options options() {
        recording::Recording_Options made;
        made.seed = 13;
        return made;
    }

    // Lets the box send and answers what it has sent in a run between these two calls.
    std::string run(void (*start)(int slot), void (*stop)(int slot)) {
        {
            const std::lock_guard lock(m_mutex);
            m_sent.clear();
        }
        start(m_slot);
        const std::uint64_t limit = m_box->stream().ticks() + 3000;
        m_box->stream().set_limit(limit);
        while (m_box->stream().ticks() < limit || !m_box->stream().is_held_back()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        stop(m_slot);
        const std::lock_guard lock(m_mutex);
        return m_sent;
    }

    static void start_in_box_mode(int slot) { EXPECT_EQ(start_acquisition(slot, 1), SUCCESS); }

    static void stop_in_box_mode(int slot) { EXPECT_EQ(stop_acquisition(slot, 1), SUCCESS); }

    static void start_in_host_mode(int slot) { EXPECT_EQ(setSWTrigger(slot), SUCCESS); }

    static void stop_in_host_mode(int slot) { EXPECT_EQ(arm(slot), SUCCESS); }

    Log_Capture m_log;
    Waiter_Guard m_waiter;
    std::shared_ptr<Virtual_Box> m_box = std::make_shared<Virtual_Box>(options());
    int m_slot = 0;
    std::mutex m_mutex;
    std::string m_sent;
};

TEST_F(Capture_From_Box, EveryRunOfAnOpeningGetsAFile) {
    write_file("ORBE_RAW_CAPTURE", "");
    m_box->stream().set_limit(0);
    ASSERT_EQ(openBS(m_slot), SUCCESS);
    const std::string first = run(start_in_box_mode, stop_in_box_mode);
    const std::string second = run(start_in_box_mode, stop_in_box_mode);
    EXPECT_EQ(closeBS(m_slot), SUCCESS);
    EXPECT_GT(first.size(), 3000U * 4 * 65 * 16);
    EXPECT_TRUE(content_of("raw_data.bin") == first);
    EXPECT_TRUE(content_of("raw_data_2.bin") == second);
}

TEST_F(Capture_From_Box, HostModeIsCapturedAlike) {
    write_file("ORBE_RAW_CAPTURE", "here.bin\n");
    write_file("ORBE_HOST_MODE", "pxi\n");
    m_slot = 2;
    m_box->stream().set_limit(0);
    ASSERT_EQ(openBS(m_slot), SUCCESS);
    const std::string sent = run(start_in_host_mode, stop_in_host_mode);
    EXPECT_EQ(closeBS(m_slot), SUCCESS);
    EXPECT_TRUE(content_of("here.bin") == sent);
    EXPECT_EQ(content_of("raw_data.bin"), "");
}

TEST_F(Capture_From_Box, WhatIsThereIsLeftAlone) {
    write_file("ORBE_RAW_CAPTURE", "here.bin");
    write_file("here.bin", "a day's work");
    m_box->stream().set_limit(0);
    ASSERT_EQ(openBS(m_slot), SUCCESS);
    const std::string sent = run(start_in_box_mode, stop_in_box_mode);
    EXPECT_EQ(closeBS(m_slot), SUCCESS);
    EXPECT_EQ(content_of("here.bin"), "a day's work");
    EXPECT_TRUE(content_of("here_2.bin") == sent);
}

TEST_F(Capture_From_Box, FileThatCannotBeMadeCostsTheCaptureAndNotTheAcquisition) {
    write_file("ORBE_RAW_CAPTURE", "missing/raw.bin");
    m_box->stream().set_limit(0);
    ASSERT_EQ(openBS(m_slot), SUCCESS);
    EXPECT_GT(run(start_in_box_mode, stop_in_box_mode).size(), 0U);
    const auto controller = npoe_adapter::current_controller();
    ASSERT_TRUE(controller->raw_capture_state());
    while (!controller->raw_capture_state()->is_settled ||
           npoe_adapter::current_np_converter(1)->queue().size() < 100) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_NE(controller->raw_capture_state()->problem.find("missing/raw.bin"), std::string::npos);
}

TEST_F(Capture_From_Box, WithoutTheFileNothingIsWrittenAndNothingSaid) {
    m_box->stream().set_limit(0);
    Printed printed = printed_by([&] { ASSERT_EQ(openBS(m_slot), SUCCESS); });
    EXPECT_EQ(printed.out.find("RAW_CAPTURE"), std::string::npos);
    EXPECT_FALSE(npoe_adapter::current_controller()->raw_capture_state());
    run(start_in_box_mode, stop_in_box_mode);
    EXPECT_EQ(closeBS(m_slot), SUCCESS);
    EXPECT_EQ(content_of("raw_data.bin"), "");
    for (const auto& line : m_log.lines()) {
        EXPECT_EQ(line.text.find("Raw capture"), std::string::npos);
    }
}

} // namespace
