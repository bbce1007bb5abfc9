// Program orbe-box. "info": who the box is and what hangs on its ports.
#pragma once

#include "Bench.h"

#include <CLI/CLI.hpp>

namespace Pelgar::ORBE::tools {

class Info_Command {
public:
    // Adds the command and its arguments. The command must live as long as the app.
    explicit Info_Command(CLI::App& app);

    bool chosen() const { return m_command->parsed(); }

    // Prints what the box and its headstages tell, and answers the program's exit code: 0, or 1 when a
    // headstage whose link is locked does not answer.
    int run(const Bench& bench) const;

private:
    CLI::App* m_command;
};

} // namespace Pelgar::ORBE::tools
