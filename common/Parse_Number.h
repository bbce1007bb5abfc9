// Layer: common. Text to number as the standard library does it (leading blanks skipped, trailing text
// ignored), with the same exception texts on every compiler. Called from the host's threads; never blocks.
#pragma once

#include <string>

namespace Pelgar::ORBE {

// Throws std::invalid_argument("invalid stof argument") when the text does not begin with a number and
// std::out_of_range("stof argument out of range") when it is too large or too small for a float.
float parse_float(const std::string& text);

// Base ten. Throws std::invalid_argument("invalid stoi argument") when the text does not begin with a number
// and std::out_of_range("stoi argument out of range") when it does not fit an int.
int parse_int(const std::string& text);

} // namespace Pelgar::ORBE
