// Test support, Linux. The stacks of all threads of the process, on standard error. Any thread; for a process
// that is going to end.
#pragma once

namespace Pelgar::ORBE::test {

void print_all_stacks();

} // namespace Pelgar::ORBE::test
