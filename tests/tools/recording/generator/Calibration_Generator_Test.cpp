#include "generator/Calibration_Generator.h"

#include "gain/C_L2_CH_Gain_Fix_Filter.h"
#include "probe_link/M_NP_Probe_Config.h"
#include "probe_link/NP_Probe_Config_Reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using recording::Calibration_Generator;

std::vector<std::vector<std::string>> fields_of(const std::string& text) {
    std::vector<std::vector<std::string>> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        std::istringstream fields(line);
        lines.emplace_back();
        for (std::string field; std::getline(fields, field, ',');) {
            lines.back().push_back(field);
        }
    }
    return lines;
}

void write(const char* path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

TEST(CalibrationGenerator, FirstLineIsTheSerialNumberAlone) {
    const Calibration_Generator generator(1, 22175715561, "\n");
    EXPECT_TRUE(generator.adc_calibration().starts_with("22175715561\n0,"));
    EXPECT_TRUE(generator.gain_calibration().starts_with("22175715561\n0,"));
}

TEST(CalibrationGenerator, SeedDecidesTheContent) {
    const Calibration_Generator one(1, 5, "\n");
    const Calibration_Generator two(2, 5, "\n");
    EXPECT_EQ(one.adc_calibration(), Calibration_Generator(1, 5, "\n").adc_calibration());
    EXPECT_NE(one.adc_calibration(), two.adc_calibration());
    EXPECT_EQ(one.gain_calibration(), Calibration_Generator(1, 5, "\n").gain_calibration());
    EXPECT_NE(one.gain_calibration(), two.gain_calibration());
}

TEST(CalibrationGenerator, AdcLinesHaveNineFieldsAndEveryAdcInOrder) {
    const auto lines = fields_of(Calibration_Generator(3, 5, "\n").adc_calibration());
    ASSERT_EQ(lines.size(), 33U);
    for (std::size_t adc = 0; adc < 32; ++adc) {
        ASSERT_EQ(lines[adc + 1].size(), 9U);
        EXPECT_EQ(lines[adc + 1][0], std::to_string(adc));
    }
}

TEST(CalibrationGenerator, GainLinesHaveSeventeenFieldsNearOne) {
    const auto lines = fields_of(Calibration_Generator(3, 5, "\n").gain_calibration());
    ASSERT_EQ(lines.size(), 961U);
    std::set<std::string> factors;
    for (std::size_t electrode = 0; electrode < 960; ++electrode) {
        const auto& line = lines[electrode + 1];
        ASSERT_EQ(line.size(), 17U);
        EXPECT_EQ(line[0], std::to_string(electrode));
        for (std::size_t k = 1; k < line.size(); ++k) {
            factors.insert(line[k]);
            const double factor = std::stod(line[k]);
            ASSERT_GE(factor, 0.9);
            ASSERT_LE(factor, 1.1);
        }
    }
    EXPECT_GT(factors.size(), 1500U);
}

TEST(CalibrationGenerator, LibraryTakesBothFilesWithBothLineEnds) {
    for (const std::string line_end : {"\n", "\r\n"}) {
        const Calibration_Generator generator(7, 22175715561, line_end);
        write("adc.csv", generator.adc_calibration());
        write("gain.csv", generator.gain_calibration());

        NP_Probe_Config_Reader reader;
        ASSERT_TRUE(reader.load_adc_calibration_data_from_file("adc.csv"));
        NP_Probe_Config_Module config(nullptr);
        for (const ADC_Calibration& calibration : reader.adc_calibration()) {
            EXPECT_EQ(config.set_adc_calibration(&calibration), 0);
        }
        C_L2_CH_Gain_Fix_Filter filter;
        EXPECT_TRUE(filter.load_gain_calibration("gain.csv"));
    }
}

} // namespace
