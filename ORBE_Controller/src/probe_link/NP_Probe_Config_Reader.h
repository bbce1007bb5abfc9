// Layer: device controller, probe link. Reads the ADC calibration file that comes with a probe. Called on the
// host's threads; blocks on the file.
#pragma once

#include "probe_link/ADC_Calibration.h"
#include "probe_link/NP_Probe_Layout.h"
#include "resources/Resource_Directory.h"

#include <array>
#include <string>

namespace Pelgar::ORBE {

// The file's first line is the probe's serial number, one word without blanks. 32 rows of nine numbers
// follow, one an ADC: ADC index, CompP, CompN, Slope, Coarse, Fine, Cfix, Offset, Threshold, each number with
// one separator behind it (a comma, or the line's end). Lines may end in LF or in CR LF; what follows the
// 32nd row is not looked at.
class NP_Probe_Config_Reader {
public:
    using ADC_Table = std::array<ADC_Calibration, probe_layout::adc_count>;

    explicit NP_Probe_Config_Reader(std::string resource_directory = default_resource_directory());

    // False, with a message on standard error and the table as it was, when the file cannot be read or is
    // malformed. Never throws.
    bool load_adc_calibration_data_from_file(const char* path);

    // The same for the file of the resource directory.
    bool load_adc_calibration_data_from_file();

    // The rows in the file's order; all zero before the first successful load.
    const ADC_Table& adc_calibration() const { return m_adc_calibration; }

private:
    std::string m_resource_directory;
    ADC_Table m_adc_calibration{};
};

} // namespace Pelgar::ORBE
