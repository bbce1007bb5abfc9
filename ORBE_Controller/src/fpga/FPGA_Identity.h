// Layer: device controller. The layouts of the two identity words that the FPGA design carries. Pure
// functions.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

// Design signature word.
inline constexpr unsigned signature_design_id_shift = 16;
inline constexpr std::uint32_t signature_np_port_count_mask = 0xF0;
inline constexpr unsigned signature_np_port_count_shift = 4;

// "NP" in ASCII: the design that serves Neuropixels probes.
inline constexpr std::uint32_t neuropixels_design_id = 0x4E50;

constexpr std::uint32_t design_id(std::uint32_t signature) {
    return signature >> signature_design_id_shift;
}

constexpr std::uint8_t np_port_count_of(std::uint32_t signature) {
    return static_cast<std::uint8_t>((signature & signature_np_port_count_mask) >>
                                     signature_np_port_count_shift);
}

// The day on which the design was built, from the build timestamp word: day in bits 31..27, month in 26..23,
// year since 2000 in 22..17.
struct Build_Date {
    unsigned day;
    unsigned month;
    unsigned year;
};

constexpr Build_Date build_date_of(std::uint32_t timestamp) {
    return {timestamp >> 27U, (timestamp >> 23U) & 0xFU, 2000U + ((timestamp >> 17U) & 0x3FU)};
}

} // namespace Pelgar::ORBE
