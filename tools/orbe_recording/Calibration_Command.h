// Program orbe-recording. "calibration": writes the pair of calibration files of a made-up probe.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

namespace Pelgar::ORBE::recording {

class Calibration_Command {
public:
    // Adds the command and its arguments. The command must live as long as the app.
    explicit Calibration_Command(CLI::App& app);

    bool chosen() const { return m_command->parsed(); }

    // Writes the files and answers the program's exit code. Asks before it overwrites one. Throws
    // std::exception with a text for the user.
    int run() const;

private:
    CLI::App* m_command;
    std::string m_folder;
    std::uint64_t m_seed = 1;
    std::uint64_t m_serial_number = 22175715561;
    bool m_crlf = false;
    bool m_force = false;
};

} // namespace Pelgar::ORBE::recording
