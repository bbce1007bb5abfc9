// Tools, recording library. Numbers in the arguments of the programs, read whole: anything that is not a
// number from end to end is refused with a text for the user.
#pragma once

#include <cstdint>
#include <string_view>

namespace Pelgar::ORBE::recording {

// Base ten. Throws std::invalid_argument("<what> '<text>' is not a number").
std::uint64_t parse_unsigned(std::string_view text, std::string_view what);

} // namespace Pelgar::ORBE::recording
