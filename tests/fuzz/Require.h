// Fuzzing: ends the process when the code under test did something else than it must.
#pragma once

namespace Pelgar::ORBE::test {

// Aborts with `what` on the process's standard error when `condition` does not hold, in every build.
void require(bool condition, const char* what);

} // namespace Pelgar::ORBE::test
