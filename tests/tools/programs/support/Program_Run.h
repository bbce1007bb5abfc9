// Test support: runs one of the programs as a user does.
#pragma once

#include <string>

namespace Pelgar::ORBE::test {

struct Program_Run {
    int exit_code = -1;
    std::string output;
    std::string errors;
};

// Runs a shell command in the working directory and waits for its end.
Program_Run run_program(const std::string& command);

} // namespace Pelgar::ORBE::test
