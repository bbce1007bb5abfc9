// Program orbe-recording. "make": writes a generated recording into a file.
#pragma once

#include "generator/Recording_Options.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace Pelgar::ORBE::recording {

class Make_Command {
public:
    // Adds the command and its arguments. The command must live as long as the app.
    explicit Make_Command(CLI::App& app);

    bool chosen() const { return m_command->parsed(); }

    // Writes the recording and answers the program's exit code. Asks before it overwrites a file. Throws
    // std::exception with a text for the user.
    int run() const;

private:
    void add_length_options();
    void add_content_options();
    void add_fault_options();
    Recording_Options options() const;

    CLI::App* m_command;
    std::string m_path;
    bool m_force = false;
    double m_seconds = 1.0;
    double m_tone_bin = 40.0;
    double m_tone_hertz = 0.0;
    bool m_no_rhd = false;
    std::vector<unsigned> m_ports;
    std::vector<std::string> m_signals;
    std::vector<std::string> m_faults;
    Recording_Options m_options;
};

} // namespace Pelgar::ORBE::recording
