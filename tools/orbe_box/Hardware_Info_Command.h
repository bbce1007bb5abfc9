// Program orbe-box. "hwinfo": the record in the box's configuration flash that tells about its hardware.
#pragma once

#include "Bench.h"
#include "flash/ORBE_HW_Info.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace Pelgar::ORBE::tools {

class Hardware_Info_Command {
public:
    // Adds the command and its arguments. The command must live as long as the app.
    explicit Hardware_Info_Command(CLI::App& app);

    bool chosen() const { return m_command->parsed(); }

    // Looks at the record that shall be written before anything else happens. Throws std::invalid_argument
    // when it is none.
    void check_arguments();

    // Prints the record, or writes it when asked to, and answers the program's exit code: 0, or 1 when the
    // record was not written.
    int run(const Bench& bench) const;

private:
    int write(const Bench& bench) const;

    CLI::App* m_command;
    std::optional<std::string> m_text; // hexadecimal; nothing: only print
    ORBE_HW_Info m_record;
    bool m_yes = false;
};

} // namespace Pelgar::ORBE::tools
