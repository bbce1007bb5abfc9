#include "generator/Output_File.h"

#include "Temp_Directory.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using Pelgar::ORBE::recording::Output_File;
using Pelgar::ORBE::test::Temp_Directory;

constexpr std::array<std::uint8_t, 3> abc = {'a', 'b', 'c'};

std::string content(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::ptrdiff_t entries(const Temp_Directory& directory) {
    return std::distance(std::filesystem::directory_iterator(directory.path()), {});
}

std::string refusal(const std::filesystem::path& path) {
    try {
        Output_File file(path);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "accepted";
}

TEST(OutputFile, AppearsWhenItIsComplete) {
    const Temp_Directory directory;
    const auto path = directory.path() / "out.bin";
    Output_File file(path);
    file.write(abc);
    EXPECT_FALSE(std::filesystem::exists(path));
    file.commit();
    EXPECT_EQ(content(path), "abc");
    EXPECT_EQ(entries(directory), 1);
}

TEST(OutputFile, LeavesNothingWhenItIsGivenUp) {
    const Temp_Directory directory;
    {
        Output_File file(directory.path() / "out.bin");
        file.write(abc);
        EXPECT_EQ(entries(directory), 1);
    }
    EXPECT_EQ(entries(directory), 0);
}

TEST(OutputFile, ReplacesAFileOnlyWhenItIsComplete) {
    const Temp_Directory directory;
    const auto path = directory.path() / "out.bin";
    std::ofstream(path) << "old";
    {
        Output_File file(path);
        file.write(abc);
    }
    EXPECT_EQ(content(path), "old");
    Output_File file(path);
    file.write(abc);
    file.commit();
    EXPECT_EQ(content(path), "abc");
}

#if !defined(_WIN32) // where symbolic links take a privilege, and devices have no place in the file system

TEST(OutputFile, WritesThroughASymbolicLink) {
    const Temp_Directory directory;
    std::ofstream(directory.path() / "real") << "old";
    std::filesystem::create_symlink("real", directory.path() / "link");
    Output_File file(directory.path() / "link");
    file.write(abc);
    file.commit();
    EXPECT_TRUE(std::filesystem::is_symlink(directory.path() / "link"));
    EXPECT_EQ(content(directory.path() / "real"), "abc");
}

TEST(OutputFile, RefusesADevice) {
    EXPECT_EQ(refusal("/dev/null"), "cannot write '/dev/null': it is not a regular file");
}

#endif

TEST(OutputFile, SaysWhyItCannotWrite) {
    const Temp_Directory directory;
    EXPECT_EQ(refusal(directory.path()), "cannot write '" + directory.path().string() + "': Is a directory");
    const auto nowhere = directory.path() / "no" / "out";
    EXPECT_EQ(refusal(nowhere), "cannot write '" + nowhere.string() + "': No such file or directory");
}

} // namespace
