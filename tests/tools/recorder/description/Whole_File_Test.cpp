#include "description/Whole_File.h"

#include "Temp_Directory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::recorder;

TEST(Whole_File, IsWrittenAndReplaced) {
    const test::Temp_Directory directory;
    const auto path = directory.path() / "file";
    EXPECT_THROW(read_file(path), std::system_error);
    write_file(path, "one");
    write_file(path, "another");
    EXPECT_EQ(read_file(path), "another");
    EXPECT_FALSE(std::filesystem::exists(directory.path() / "file.partial"));
    EXPECT_THROW(write_file(directory.path() / "none" / "file", ""), std::system_error);
}

// A viewer of a recording reads its table of gaps again and again.
TEST(Whole_File, IsReplacedWhileSomebodyReadsIt) {
    const test::Temp_Directory directory;
    const auto path = directory.path() / "file";
    write_file(path, "one");
    std::ifstream reader(path);
    std::atomic<bool> is_written{false};
    std::thread thread([&] {
        // Once the new one is there to take its place, the reader goes on for a little.
        while (!is_written && !std::filesystem::exists(directory.path() / "file.partial")) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        reader.close();
    });
    EXPECT_NO_THROW(write_file(path, "another"));
    is_written = true;
    thread.join();
    EXPECT_EQ(read_file(path), "another");
}

} // namespace
