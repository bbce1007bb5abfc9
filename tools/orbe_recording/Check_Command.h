// Program orbe-recording. "check": says what a recording holds and what is wrong with it.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace Pelgar::ORBE::recording {

class Check_Command {
public:
    // Adds the command and its arguments. The command must live as long as the app.
    explicit Check_Command(CLI::App& app);

    bool chosen() const { return m_command->parsed(); }

    // Prints the findings and answers the program's exit code: 0 nothing is wrong, 1 something is, 2 the file
    // cannot be read or is no recording.
    int run() const;

private:
    CLI::App* m_command;
    std::string m_path;
    bool m_json = false;
};

} // namespace Pelgar::ORBE::recording
