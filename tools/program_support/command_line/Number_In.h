// Tools, what all programs share. Checks of numbers in arguments. The argument parser takes "nan" for a
// number within any range, and wraps whole numbers that are negative or too large. Main thread.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <limits>

namespace Pelgar::ORBE::tools {

// A number, not nan, from `least` to `most`.
CLI::Validator real_in(double least, double most);

inline constexpr std::uint64_t any_number = std::numeric_limits<std::uint64_t>::max();

// A whole number from `least` to `most`, decimal or hexadecimal (0x...).
CLI::Validator whole_in(std::uint64_t least = 0, std::uint64_t most = any_number);

} // namespace Pelgar::ORBE::tools
