// Program orbe-record, all of it but its `main`, so that tests can run it on a modelled box. Main thread.
#pragma once

namespace Pelgar::ORBE::recorder {

namespace record_exit_codes {

inline constexpr int lost = 3;
inline constexpr int not_written = 4;

} // namespace record_exit_codes

// Does what the arguments say and answers the program's exit code: 0 recorded and nothing lost, 1 nothing
// recorded, 2 wrong arguments, 3 recorded with losses, 4 the disk did not take it all.
int run_record_program(int argc, const char* const* argv);

} // namespace Pelgar::ORBE::recorder
