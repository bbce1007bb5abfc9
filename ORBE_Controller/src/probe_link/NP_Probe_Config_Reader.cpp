#include "probe_link/NP_Probe_Config_Reader.h"

#include "common/Console.h"

#include <exception>
#include <fstream>
#include <locale>
#include <string_view>
#include <utility>

namespace Pelgar::ORBE {

namespace {

constexpr const char* default_adc_calibration_file = "22175715561_ADCCalibration.csv";

std::uint32_t read_number(std::istream& stream) {
    std::uint32_t number = 0;
    stream >> number;
    // The separator. With CR LF this takes the CR; the LF is leading white space of the next number.
    stream.get();
    return number;
}

// The columns are read in the order of the initialisers.
ADC_Calibration read_row(std::istream& stream) {
    return {.adc = read_number(stream),
            .comp_p = read_number(stream),
            .comp_n = read_number(stream),
            .slope = read_number(stream),
            .coarse = read_number(stream),
            .fine = read_number(stream),
            .cfix = read_number(stream),
            .offset = read_number(stream),
            .threshold = read_number(stream)};
}

} // namespace

NP_Probe_Config_Reader::NP_Probe_Config_Reader(std::string resource_directory)
    : m_resource_directory(std::move(resource_directory)) {}

bool NP_Probe_Config_Reader::load_adc_calibration_data_from_file(const char* path) {
    const std::string_view name = path != nullptr ? path : "";
    std::ifstream stream(std::string(name), std::ios::binary);
    if (!stream) {
        console::err("ADC config file open error. File : ", name, '\n');
        return false;
    }
    try {
        // Numbers are plain digits, whatever locale the host has set.
        stream.imbue(std::locale::classic());
        stream.exceptions(std::ios::badbit | std::ios::failbit | std::ios::eofbit);
        std::string serial_number;
        stream >> serial_number;
        ADC_Table table{};
        for (ADC_Calibration& row : table) {
            row = read_row(stream);
        }
        m_adc_calibration = table;
    } catch (const std::exception& error) {
        console::err("Exception caught : ", error.what());
        return false;
    }
    console::out("ADC calibration data loaded.\n");
    return true;
}

bool NP_Probe_Config_Reader::load_adc_calibration_data_from_file() {
    return load_adc_calibration_data_from_file(
        (m_resource_directory + '/' + default_adc_calibration_file).c_str());
}

} // namespace Pelgar::ORBE
