// Layer: device controller, probe link. The calibration of one of the probe's 32 ADCs, as the probe's
// calibration file lists it. Plain data.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

struct ADC_Calibration {
    std::uint32_t adc;       // 0..31
    std::uint32_t comp_p;    // 0..31
    std::uint32_t comp_n;    // 0..31
    std::uint32_t slope;     // 0..7
    std::uint32_t coarse;    // 0..3
    std::uint32_t fine;      // 0..3
    std::uint32_t cfix;      // 0..15
    std::uint32_t offset;    // kept in memory, not part of the probe's registers
    std::uint32_t threshold; // kept in memory, not part of the probe's registers
};

} // namespace Pelgar::ORBE
