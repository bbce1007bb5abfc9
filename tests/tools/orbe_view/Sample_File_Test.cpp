// Files that somebody may still be writing, read as far as they are there.
#include "folders/Sample_File.h"

#include "Temp_Directory.h"
#include "description/Whole_File.h"
#include "folders/Digital_Lines.h"

#include <gtest/gtest.h>

#include <fstream>
#include <vector>

namespace Pelgar::ORBE::view {

namespace {

template <typename Number>
void append(const std::filesystem::path& path, const std::vector<Number>& numbers,
            std::size_t bytes_less = 0) {
    std::ofstream file(path, std::ios::binary | std::ios::app);
    file.write(reinterpret_cast<const char*>(numbers.data()),
               static_cast<std::streamsize>(numbers.size() * sizeof(Number) - bytes_less));
}

std::string head_of(const std::string& type) {
    std::string text = "{'descr': " + type + ", 'fortran_order': False, 'shape': (0,), }";
    text.resize(117, ' ');
    text += '\n';
    return std::string("\x93NUMPY\x01\x00", 8) + static_cast<char>(text.size()) + '\0' + text;
}

class Growing_File : public testing::Test {
protected:
    const test::Temp_Directory directory;
    const std::filesystem::path path = directory.path() / "continuous.dat";
};

} // namespace

TEST_F(Growing_File, HasTheRowsThatAreWhole) {
    Sample_File file(path, 3);
    EXPECT_FALSE(file.look()); // not there yet
    EXPECT_EQ(file.rows(), 0U);
    append<std::int16_t>(path, {1, 2, 3, 4, 5, 6, 7}, 1);
    EXPECT_TRUE(file.look());
    EXPECT_FALSE(file.look());
    EXPECT_EQ(file.rows(), 2U);
    EXPECT_EQ(file.rows_before(), 0U);
    std::vector<std::int16_t> row(3);
    file.read(1, row);
    EXPECT_EQ(row, (std::vector<std::int16_t>{4, 5, 6}));
    EXPECT_THROW(file.read(2, row), std::runtime_error);
    std::filesystem::resize_file(path, 12);
    append<std::int16_t>(path, {10, 11, 12});
    EXPECT_TRUE(file.look());
    EXPECT_EQ(file.rows(), 3U);
    EXPECT_EQ(file.rows_before(), 2U);
    file.read(2, row);
    EXPECT_EQ(row, (std::vector<std::int16_t>{10, 11, 12}));
}

TEST_F(Growing_File, KeepsItsRowsWhateverBecomesOfIt) {
    append<std::int16_t>(path, {1, 2, 3, 4});
    Sample_File file(path, 2);
    EXPECT_TRUE(file.look());
    std::filesystem::resize_file(path, 2);
    EXPECT_FALSE(file.look());
    EXPECT_EQ(file.rows(), 2U);
    std::vector<std::int16_t> row(2);
    try {
        file.read(0, row);
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "cannot read '" + path.string() + "' any further");
    }
}

TEST_F(Growing_File, HasEdgesAtTheirSamples) {
    const auto samples = directory.path() / "sample_numbers.npy";
    const auto words = directory.path() / "full_words.npy";
    Digital_Lines lines(directory.path());
    lines.look(); // not there yet
    std::vector<std::uint64_t> shown(4, 7);
    lines.read(0, shown);
    EXPECT_EQ(shown, (std::vector<std::uint64_t>{0, 0, 0, 0}));
    recorder::write_file(samples, head_of("'<i8'"));
    append<std::uint64_t>(samples, {10, 12, 12, 20});
    recorder::write_file(words, head_of("'<u8'"));
    append<std::uint64_t>(words, {1, 3, 2, 0}, 5); // the last one is not whole
    lines.look();
    lines.read(9, shown);
    EXPECT_EQ(shown, (std::vector<std::uint64_t>{0, 1, 1, 2}));
    lines.read(18, shown);
    EXPECT_EQ(shown, (std::vector<std::uint64_t>{2, 2, 2, 2}));
    std::filesystem::resize_file(words, head_of("'<u8'").size() + 3 * 8);
    append<std::uint64_t>(words, {0});
    lines.look();
    lines.read(18, shown);
    EXPECT_EQ(shown, (std::vector<std::uint64_t>{2, 2, 0, 0}));
    lines.read(1'000'000, shown);
    EXPECT_EQ(shown, (std::vector<std::uint64_t>{0, 0, 0, 0}));
}

TEST_F(Growing_File, OfAnotherKindIsRefused) {
    Digital_Lines lines(directory.path());
    const auto samples = directory.path() / "sample_numbers.npy";
    recorder::write_file(samples, head_of("'<u2'"));
    try {
        lines.look();
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "'" + samples.string() + "' is no table of '<i8'");
    }
}

} // namespace Pelgar::ORBE::view
