#include "formats/Data_File.h"

#include "description/Whole_File.h"
#include "formats/Npy_File.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

using namespace Pelgar::ORBE::recorder;

void append(Data_File& file, const std::string& text) {
    std::memcpy(file.append(text.size()), text.data(), text.size());
}

TEST(Data_File, AppearsWithItsFirstBytes) {
    Data_File file("data");
    file.flush();
    EXPECT_FALSE(std::filesystem::exists("data"));
    append(file, "one");
    append(file, "two");
    EXPECT_EQ(file.size(), 6U);
    file.flush();
    EXPECT_EQ(read_file("data"), "onetwo");
    append(file, "three");
    file.overwrite(0, "O");
    file.close();
    EXPECT_EQ(read_file("data"), "Onetwothree");
}

TEST(Data_File, ReadsZerosWhereZerosAre) {
    for (const std::uint64_t zeros : {std::uint64_t{0}, std::uint64_t{10}, std::uint64_t{3} << 20U}) {
        Data_File file("data");
        append(file, "before");
        file.append_zeros(zeros);
        append(file, "behind");
        EXPECT_EQ(file.size(), zeros + 12);
        file.close();
        EXPECT_EQ(read_file("data"),
                  "before" + std::string(static_cast<std::size_t>(zeros), '\0') + "behind");
    }
}

TEST(Data_File, MayBeginWithAHole) {
    Data_File file("data");
    file.append_zeros(2U << 20U);
    append(file, "x");
    file.close();
    EXPECT_EQ(read_file("data"), std::string(2U << 20U, '\0') + "x");
}

TEST(Data_File, SaysThatItsFolderIsNotThere) {
    Data_File file("nowhere/data");
    append(file, "x");
    try {
        file.flush();
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
        EXPECT_NE(std::string(error.what()).find("data"), std::string::npos);
    }
}

#if !defined(_WIN32)

// Windows does not let anybody take a file away that is being written.
TEST(Data_File, NoticesThatItHasBeenTakenAway) {
    Data_File file("data");
    append(file, "x");
    file.flush();
    std::filesystem::remove("data");
    append(file, "y");
    try {
        file.flush();
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
        EXPECT_NE(std::string(error.what()).find("taken away"), std::string::npos);
    }
}

TEST(Data_File, KeepsWhatAFullDiskDoesNotTake) {
    std::filesystem::create_symlink("/dev/full", "data");
    Data_File file("data");
    append(file, "x");
    try {
        file.flush();
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_space_on_device);
    }
    EXPECT_EQ(file.buffered(), 1U);
}

#endif

TEST(Npy_File, SaysHowManyNumbersAreOnTheDisk) {
    Npy_File file("n.npy", "<i2");
    file.append(std::int16_t{7});
    file.flush();
    EXPECT_EQ(read_file("n.npy"), npy_head("<i2", 1) + std::string("\x07\x00", 2));
    file.append(std::int16_t{8});
    EXPECT_EQ(read_file("n.npy").substr(0, npy_head_size), npy_head("<i2", 1));
    file.close();
    EXPECT_EQ(read_file("n.npy"), npy_head("<i2", 2) + std::string("\x07\x00\x08\x00", 4));
}

} // namespace
