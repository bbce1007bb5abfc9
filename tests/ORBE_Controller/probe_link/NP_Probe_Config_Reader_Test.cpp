#include "probe_link/NP_Probe_Config_Reader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

namespace Pelgar::ORBE {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

using Numbers = std::vector<std::vector<unsigned>>;

constexpr const char* file_name = "calibration.csv";

Numbers some_numbers(unsigned rows = 32) {
    Numbers numbers;
    for (unsigned row = 0; row < rows; ++row) {
        numbers.push_back({31 - row, row, (row * 7) % 32, row % 8, row % 4, (row + 1) % 4, row % 16,
                           500 + row, 4294967295U - row});
    }
    return numbers;
}

std::string file_text(const Numbers& numbers, const std::string& line_end = "\n") {
    std::string text = "22175715561" + line_end;
    for (const auto& row : numbers) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            text += (column == 0 ? "" : ",") + std::to_string(row[column]);
        }
        text += line_end;
    }
    return text;
}

void write_file(const std::string& text, const std::string& name = file_name) {
    std::ofstream(name, std::ios::binary) << text;
}

Numbers numbers_of(const NP_Probe_Config_Reader& reader) {
    Numbers numbers;
    for (const ADC_Calibration& row : reader.adc_calibration()) {
        numbers.push_back({row.adc, row.comp_p, row.comp_n, row.slope, row.coarse, row.fine, row.cfix,
                           row.offset, row.threshold});
    }
    return numbers;
}

const Numbers& all_zero() {
    static const Numbers zero(32, std::vector<unsigned>(9, 0));
    return zero;
}

// What a stream of the running standard library says when it fails.
std::string stream_failure() {
    std::istringstream stream;
    try {
        stream.exceptions(std::ios::failbit);
        stream.setstate(std::ios::failbit);
    } catch (const std::ios_base::failure& failure) {
        return failure.what();
    }
    return {};
}

void expect_loaded(const std::string& text, const Numbers& numbers) {
    write_file(text);
    NP_Probe_Config_Reader reader;
    CaptureStdout();
    CaptureStderr();
    EXPECT_TRUE(reader.load_adc_calibration_data_from_file(file_name));
    EXPECT_EQ(GetCapturedStdout(), "ADC calibration data loaded.\n");
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(numbers_of(reader), numbers);
}

void expect_malformed(const std::string& text) {
    write_file(text);
    NP_Probe_Config_Reader reader;
    CaptureStdout();
    CaptureStderr();
    EXPECT_FALSE(reader.load_adc_calibration_data_from_file(file_name));
    EXPECT_EQ(GetCapturedStdout(), "");
    EXPECT_EQ(GetCapturedStderr(), "Exception caught : " + stream_failure());
    EXPECT_EQ(numbers_of(reader), all_zero());
}

TEST(NP_Probe_Config_Reader, Table_Starts_Zeroed) {
    EXPECT_EQ(numbers_of(NP_Probe_Config_Reader()), all_zero());
}

TEST(NP_Probe_Config_Reader, Lines_Ending_In_LF) {
    expect_loaded(file_text(some_numbers()), some_numbers());
}

TEST(NP_Probe_Config_Reader, Lines_Ending_In_CR_LF) {
    expect_loaded(file_text(some_numbers(), "\r\n"), some_numbers());
}

TEST(NP_Probe_Config_Reader, Lines_After_The_32nd_Row_Are_Ignored) {
    expect_loaded(file_text(some_numbers()) + "anything at all", some_numbers());
}

TEST(NP_Probe_Config_Reader, Blanks_Before_A_Number_And_Empty_Lines_Are_Skipped) {
    std::string text = file_text(some_numbers());
    text.replace(text.find(",500"), 1, ", \t");
    text.replace(text.find('\n'), 1, "\n\n\r\n");
    expect_loaded(text, some_numbers());
}

TEST(NP_Probe_Config_Reader, Any_Character_Separates) {
    std::string text = file_text(some_numbers());
    for (char& character : text) {
        character = character == ',' ? ';' : character;
    }
    expect_loaded(text, some_numbers());
}

TEST(NP_Probe_Config_Reader, One_Character_Behind_The_Last_Number_Is_Enough) {
    std::string text = file_text(some_numbers(), "\r\n");
    text.pop_back();
    expect_loaded(text, some_numbers());
}

TEST(NP_Probe_Config_Reader, Missing_Final_Separator) {
    std::string text = file_text(some_numbers());
    text.pop_back();
    expect_malformed(text);
}

TEST(NP_Probe_Config_Reader, Only_31_Rows) {
    expect_malformed(file_text(some_numbers(31)));
    expect_malformed(file_text(some_numbers(31), "\r\n"));
}

TEST(NP_Probe_Config_Reader, Header_With_Blanks) {
    expect_malformed("serial " + file_text(some_numbers()));
    expect_malformed("probe ADC calibration\n" + file_text(some_numbers()));
}

TEST(NP_Probe_Config_Reader, Missing_Header_Takes_The_First_Row_For_It) {
    std::string text = file_text(some_numbers());
    text.erase(0, text.find('\n') + 1);
    expect_malformed(text);
}

TEST(NP_Probe_Config_Reader, Not_A_Number) {
    std::string text = file_text(some_numbers());
    text.replace(text.find(",502"), 4, ",abc");
    expect_malformed(text);
}

TEST(NP_Probe_Config_Reader, Number_That_Does_Not_Fit) {
    std::string text = file_text(some_numbers());
    text.replace(text.find("4294967295"), 10, "4294967296");
    expect_malformed(text);
}

TEST(NP_Probe_Config_Reader, Empty_Column) {
    std::string text = file_text(some_numbers());
    text.replace(text.find(",502"), 4, ",");
    expect_malformed(text);
}

TEST(NP_Probe_Config_Reader, Blank_Before_A_Comma_Counts_As_The_Separator) {
    std::string text = file_text(some_numbers());
    text.replace(text.find(",502"), 4, " ,502");
    expect_malformed(text);
}

TEST(NP_Probe_Config_Reader, Empty_File) {
    expect_malformed("");
}

TEST(NP_Probe_Config_Reader, White_Space_Only) {
    expect_malformed(" \r\n\n");
}

TEST(NP_Probe_Config_Reader, Header_Only) {
    expect_malformed("22175715561");
    expect_malformed("22175715561\n");
    expect_malformed("22175715561\r\n");
}

TEST(NP_Probe_Config_Reader, Missing_File) {
    NP_Probe_Config_Reader reader;
    CaptureStdout();
    CaptureStderr();
    EXPECT_FALSE(reader.load_adc_calibration_data_from_file("no such file.csv"));
    EXPECT_EQ(GetCapturedStdout(), "");
    EXPECT_EQ(GetCapturedStderr(), "ADC config file open error. File : no such file.csv\n");
    EXPECT_EQ(numbers_of(reader), all_zero());
}

TEST(NP_Probe_Config_Reader, No_Path_Is_A_Missing_File) {
    NP_Probe_Config_Reader reader;
    CaptureStderr();
    EXPECT_FALSE(reader.load_adc_calibration_data_from_file(nullptr));
    EXPECT_EQ(GetCapturedStderr(), "ADC config file open error. File : \n");
}

TEST(NP_Probe_Config_Reader, Directory_Does_Not_Throw) {
    std::filesystem::create_directory("folder");
    NP_Probe_Config_Reader reader;
    CaptureStderr();
    EXPECT_FALSE(reader.load_adc_calibration_data_from_file("folder"));
    EXPECT_NE(GetCapturedStderr(), "");
    EXPECT_EQ(numbers_of(reader), all_zero());
}

TEST(NP_Probe_Config_Reader, A_Failed_Load_Keeps_The_Table_Of_The_Last_Good_One) {
    NP_Probe_Config_Reader reader;
    write_file(file_text(some_numbers()));
    CaptureStdout();
    CaptureStderr();
    EXPECT_TRUE(reader.load_adc_calibration_data_from_file(file_name));
    write_file(file_text(Numbers(31, std::vector<unsigned>(9, 1))));
    EXPECT_FALSE(reader.load_adc_calibration_data_from_file(file_name));
    EXPECT_EQ(GetCapturedStdout(), "ADC calibration data loaded.\n");
    EXPECT_EQ(GetCapturedStderr(), "Exception caught : " + stream_failure());
    EXPECT_EQ(numbers_of(reader), some_numbers());
}

// Groups digits with the very character that separates the columns.
class Comma_Grouping : public std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }

    std::string do_grouping() const override { return "\3"; }
};

TEST(NP_Probe_Config_Reader, The_Hosts_Locale_Does_Not_Matter) {
    const std::string text = file_text(some_numbers());
    const std::locale before = std::locale::global(std::locale(std::locale(), new Comma_Grouping));
    expect_loaded(text, some_numbers());
    std::locale::global(before);
}

TEST(NP_Probe_Config_Reader, Default_File_Lies_In_The_Resource_Directory) {
    std::filesystem::create_directory("resources");
    write_file(file_text(some_numbers()), "resources/22175715561_ADCCalibration.csv");
    NP_Probe_Config_Reader reader("resources");
    CaptureStdout();
    EXPECT_TRUE(reader.load_adc_calibration_data_from_file());
    EXPECT_EQ(GetCapturedStdout(), "ADC calibration data loaded.\n");
    EXPECT_EQ(numbers_of(reader), some_numbers());
}

TEST(NP_Probe_Config_Reader, Missing_Default_File_Is_Named) {
    NP_Probe_Config_Reader reader("nowhere");
    CaptureStderr();
    EXPECT_FALSE(reader.load_adc_calibration_data_from_file());
    EXPECT_EQ(GetCapturedStderr(),
              "ADC config file open error. File : nowhere/22175715561_ADCCalibration.csv\n");
}

TEST(Resource_Directory, Is_The_One_Of_The_Build) {
    EXPECT_EQ(default_resource_directory(), EXPECTED_RESOURCE_DIR);
}

} // namespace
} // namespace Pelgar::ORBE
