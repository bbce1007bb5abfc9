// Test support, Windows. A process without a console and without standard handles, as a program with windows
// is.
#pragma once

#include <string>

namespace Pelgar::ORBE::host {

// Runs the command and answers its exit code. Throws std::runtime_error when it cannot be started.
int run_detached(std::string command);

// Whether this process has no standard output.
bool is_detached();

} // namespace Pelgar::ORBE::host
