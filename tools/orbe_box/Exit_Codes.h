// Program orbe-box. What the program answers to the shell.
#pragma once

namespace Pelgar::ORBE::tools::exit_codes {

inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrong_arguments = 2;

} // namespace Pelgar::ORBE::tools::exit_codes
