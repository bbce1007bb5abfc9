// Program orbe-box. "selftest": runs every self test of a port.
#pragma once

#include "Bench.h"

#include <CLI/CLI.hpp>

namespace Pelgar::ORBE::tools {

class Self_Test_Command {
public:
    // Adds the command and its arguments. The command must live as long as the app.
    explicit Self_Test_Command(CLI::App& app);

    bool chosen() const { return m_command->parsed(); }

    // Prints a line a test, and answers the program's exit code: 0 when all have passed, 1 when not.
    int run(const Bench& bench) const;

private:
    CLI::App* m_command;
    unsigned m_port = 1; // 1..4
};

} // namespace Pelgar::ORBE::tools
