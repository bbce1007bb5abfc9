// What is captured while a recording plays.
#include "Capture_Files.h"

#include "Log_Capture.h"
#include "generator/Recording_Generator.h"

#include <NeuropixAPI.h>
#include <adapter/Adapter_State.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

class Capture_From_Recording : public testing::Test {
protected:
    static constexpr int host_slot = 2;

    ~Capture_From_Recording() override {
        closeBS(host_slot);
        closeBS(0);
    }

    static void make_recording(const std::string& name) {
        recording::Recording_Options options;
        options.seed = 7;
        options.super_frames = 3000;
        const std::vector<std::uint8_t> bytes = recording::make_recording(options);
        write_file(name, std::string(bytes.begin(), bytes.end()));
    }

    // Plays it to its end, through which the pump ends by itself.
    void play_in_host_mode() {
        write_file("ORBE_HOST_MODE", "pxi\n");
        ASSERT_EQ(openBS(host_slot), SUCCESS);
        ASSERT_EQ(setSWTrigger(host_slot), SUCCESS);
        while (m_log.count("error in main pump thread (0,0)") == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ASSERT_EQ(closeBS(host_slot), SUCCESS);
        m_log.clear();
    }

    Log_Capture m_log;
};

TEST_F(Capture_From_Recording, WholeRecordingIsCapturedAndPlaysAgain) {
    make_recording("played.bin");
    write_file("ORBE_DFGMZ_ADAPTER_SIM", "played.bin\n");
    write_file("ORBE_RAW_CAPTURE", "\n");
    play_in_host_mode();
    EXPECT_TRUE(content_of("raw_data.bin") == content_of("played.bin"));

    write_file("ORBE_DFGMZ_ADAPTER_SIM", "raw_data.bin\n");
    write_file("ORBE_RAW_CAPTURE", "again.bin\n");
    play_in_host_mode();
    EXPECT_TRUE(content_of("again.bin") == content_of("played.bin"));
    EXPECT_TRUE(content_of("raw_data.bin") == content_of("played.bin"));
}

TEST_F(Capture_From_Recording, BoxModeCapturesTheWholeTransfersThatItPlays) {
    make_recording("played.bin");
    write_file("ORBE_DFGMZ_ADAPTER_SIM", "played.bin\n");
    write_file("ORBE_RAW_CAPTURE", "");
    ASSERT_EQ(openBS(0), SUCCESS);
    ASSERT_EQ(start_acquisition(0, 1), SUCCESS);
    while (m_log.count("error in main pump thread (0,1)") == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_EQ(closeBS(0), SUCCESS);
    std::string played = content_of("played.bin");
    played.resize(played.size() >> 20U << 20U);
    EXPECT_TRUE(content_of("raw_data.bin") == played);
}

TEST_F(Capture_From_Recording, RecordingIsNotCapturedIntoItself) {
    make_recording("raw_data.bin");
    const std::string before = content_of("raw_data.bin");
    for (const std::string name : {"", "./raw_data.bin"}) {
        write_file("ORBE_DFGMZ_ADAPTER_SIM", "raw_data.bin\n");
        write_file("ORBE_RAW_CAPTURE", name);
        m_log.clear();
        EXPECT_EQ(openBS(0), VERSION_MISMATCH);
        const std::string shown = name.empty() ? "raw_data.bin" : name;
        EXPECT_EQ(m_log.count(-2, "openBS : " + shown +
                                      " cannot be played (ORBE_DFGMZ_ADAPTER_SIM) and captured into "
                                      "(ORBE_RAW_CAPTURE) at once"),
                  1);
        EXPECT_TRUE(content_of("raw_data.bin") == before);
    }
    std::filesystem::remove("ORBE_RAW_CAPTURE");
    EXPECT_EQ(openBS(0), SUCCESS);
}

TEST_F(Capture_From_Recording, FileFromBeforeIsKeptAsWithoutACapture) {
    make_recording("played.bin");
    write_file("raw_data.bin", "a day's work");
    write_file("ORBE_DFGMZ_ADAPTER_SIM", "played.bin\n");
    write_file("ORBE_RAW_CAPTURE", "\n");
    play_in_host_mode();
    EXPECT_TRUE(content_of("raw_data.bin") == content_of("played.bin"));
    bool is_kept = false;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        is_kept = is_kept || content_of(entry.path().string()) == "a day's work";
    }
    EXPECT_TRUE(is_kept);
}

} // namespace
