// Tools, recording library. What is wrong with a recording, kind by kind. Any thread; never blocks.
#pragma once

#include "checker/Check_Report.h"

#include <span>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recording {

struct Damage {
    std::string stream; // "port 1", "RHD"; empty: the whole file
    const char* kind;   // for machines
    std::string text;   // how many of what: "2 words with a wrong lane tag"
    std::uint64_t count = 0;
    std::vector<std::uint64_t> first_rows; // where the first of them are, as far as they have a place
};

// Empty when nothing is wrong.
std::vector<Damage> damage_of(const Check_Report& report);

// One indented line for each, with row and second of the first places, broken so that it fits `width`.
std::string lines_of(const Check_Report& report, const std::vector<Damage>& damage, std::size_t width);

} // namespace Pelgar::ORBE::recording
