// Four ports of random ten-bit values and the RHD stream, for seconds on end: every sample must come out of
// the exported functions as the recording holds it.
#include "Program_Run.h"
#include "Temp_Directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>

namespace {

using Pelgar::ORBE::test::Program_Run;
using Pelgar::ORBE::test::run_program;

// A recording that is removed with the object. It lies beside the build, where there is room for gigabytes.
class Long_Recording {
public:
    Long_Recording() : m_path(std::filesystem::path(ORBE_SCRATCH_DIRECTORY) / "end_to_end_recording.bin") {}

    ~Long_Recording() { std::filesystem::remove(m_path); }

    Long_Recording(const Long_Recording&) = delete;
    Long_Recording& operator=(const Long_Recording&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

TEST(LongRecording, EverySampleOfEveryPortComesOutBitForBit) {
    const Long_Recording recording;
    const std::string path = recording.path().string();
    const Program_Run made = run_program(ORBE_RECORDING_PROGRAM " make '" + path + "' --force --seed 20 --seconds " +
                                         std::to_string(ORBE_END_TO_END_SECONDS));
    ASSERT_EQ(made.exit_code, 0) << made.errors;

    // Paced, because the host's queues hold 17 ms of ADC packets, which a machine that is busy with something
    // else can miss.
    const Program_Run played =
        run_program("TMPDIR=$PWD " ORBE_PLAY_PROGRAM " --verify --paced '" + path + "'");
    EXPECT_EQ(played.exit_code, 0) << played.errors << played.output;
    EXPECT_TRUE(played.output.ends_with("All packets arrived and are equal.\n")) << played.output;

    // What the recording must yield at the least: all but its last, incomplete block of each port.
    constexpr std::uint64_t super_frames = 30'000ULL * ORBE_END_TO_END_SECONDS;
    constexpr std::uint64_t packets = (super_frames / 1792 - 1) * 1792 / 12;
    std::istringstream table(played.output);
    int ports = 0;
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string word;
        std::uint64_t port = 0;
        std::uint64_t expected = 0;
        std::uint64_t received = 0;
        std::uint64_t equal = 0;
        if (fields >> word >> port >> expected >> received >> equal && word == "port") {
            ++ports;
            EXPECT_GE(equal, packets) << line;
            EXPECT_EQ(received, expected) << line;
            EXPECT_EQ(equal, expected) << line;
        }
    }
    EXPECT_EQ(ports, 4);
}

} // namespace
