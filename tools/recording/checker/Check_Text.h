// Tools, recording library. The findings about a recording in words: a table for people, JSON for machines.
#pragma once

#include "checker/Check_Report.h"

#include <string>
#include <string_view>

namespace Pelgar::ORBE::recording {

// For a terminal whose lines hold `width` characters.
std::string text_for_people(std::string_view name, const Check_Report& report, std::size_t width);

std::string text_for_machines(std::string_view name, const Check_Report& report);

} // namespace Pelgar::ORBE::recording
