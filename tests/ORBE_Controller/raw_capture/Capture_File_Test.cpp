#include "raw_capture/Capture_File.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#if defined(__linux__)
#include <csignal>
#include <sys/resource.h>
#endif

namespace {

using Pelgar::ORBE::Capture_File;

std::string content_of(const std::string& name) {
    std::ostringstream content;
    content << std::ifstream(name, std::ios::binary).rdbuf();
    return content.str();
}

void write(Capture_File& file, const std::string& text) {
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::errc error_of(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const std::system_error& error) {
        return static_cast<std::errc>(error.code().value());
    }
    return std::errc{};
}

TEST(Capture_File, HoldsWhatIsWrittenBeforeItIsClosed) {
    Capture_File file("raw_data.bin");
    write(file, "rows");
    EXPECT_EQ(content_of("raw_data.bin"), "rows");
    write(file, " and rows");
    file.close();
    EXPECT_EQ(content_of("raw_data.bin"), "rows and rows");
}

TEST(Capture_File, TakesTheFirstFreeNameAndLeavesTheOthersAlone) {
    std::filesystem::create_directory("folder.d");
    for (const std::string folder : {"", "folder.d/", "./"}) {
        std::ofstream(folder + "capture.bin", std::ios::binary) << "one";
        std::ofstream(folder + "capture_2.bin", std::ios::binary) << "two";
        Capture_File file(folder + "capture.bin");
        EXPECT_EQ(file.name(), folder + "capture_3.bin");
        write(file, "three");
        file.close();
        EXPECT_EQ(content_of(folder + "capture.bin"), "one");
        EXPECT_EQ(content_of(folder + "capture_2.bin"), "two");
        EXPECT_EQ(content_of(folder + "capture_3.bin"), "three");
        std::filesystem::remove(folder + "capture_3.bin");
    }
    std::ofstream("plain", std::ios::binary) << "one";
    EXPECT_EQ(Capture_File("plain").name(), "plain_2");
    std::ofstream("folder.d/plain", std::ios::binary) << "one";
    EXPECT_EQ(Capture_File("folder.d/plain").name(), "folder.d/plain_2");
}

TEST(Capture_File, TakesAnEmptyFileThatIsThere) {
    std::ofstream("raw_data.bin", std::ios::binary).flush();
    EXPECT_EQ(Capture_File("raw_data.bin").name(), "raw_data.bin");
}

TEST(Capture_File, FolderThatIsNotThereIsTold) {
    EXPECT_EQ(error_of([] { Capture_File("missing/raw_data.bin"); }), std::errc::no_such_file_or_directory);
    try {
        Capture_File("missing/raw_data.bin");
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_TRUE(std::string(error.what()).starts_with("missing/raw_data.bin: ")) << error.what();
    }
}

#if defined(__linux__)

TEST(Capture_File, FolderThatVanishesIsTold) {
    std::filesystem::create_directory("folder");
    Capture_File file("folder/raw_data.bin");
    write(file, "rows");
    std::filesystem::remove_all("folder");
    EXPECT_EQ(error_of([&] { write(file, "rows"); }), std::errc::no_such_file_or_directory);
}

TEST(Capture_File, FileThatCannotGrowIsTold) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{10, RLIM_INFINITY};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    Capture_File file("raw_data.bin");
    EXPECT_EQ(error_of([&] { write(file, "more than ten bytes"); }), std::errc::file_too_large);
}

#endif

} // namespace
