// Tools, recording library. Makes the pair of calibration files that come with a probe, from a seed. Any
// thread; never blocks.
#pragma once

#include <cstdint>
#include <string>

namespace Pelgar::ORBE::recording {

class Calibration_Generator {
public:
    // `line_end` is "\n" or "\r\n", as labs have both.
    Calibration_Generator(std::uint64_t seed, std::uint64_t serial_number, std::string line_end);

    // The serial number, then a line for each of the 32 ADCs: index, CompP, CompN, slope, coarse, fine, cfix,
    // offset, threshold; all within the ranges of the probe's registers.
    std::string adc_calibration() const;

    // The serial number, then a line for each of the 960 electrodes: number, eight AP and eight LFP gain
    // correction factors within 10 % of 1.
    std::string gain_calibration() const;

private:
    std::uint64_t below(std::uint64_t limit, std::uint64_t position) const;

    std::uint64_t m_seed;
    std::uint64_t m_serial_number;
    std::string m_line_end;
};

} // namespace Pelgar::ORBE::recording
