// Tools, what all programs share. What the programs answer to the shell; each says in its help what that
// means.
#pragma once

namespace Pelgar::ORBE::tools::exit_codes {

inline constexpr int done = 0;
inline constexpr int failed = 1;
inline constexpr int wrong_arguments = 2;
inline constexpr int interrupted = 130; // stopped by the user

} // namespace Pelgar::ORBE::tools::exit_codes
