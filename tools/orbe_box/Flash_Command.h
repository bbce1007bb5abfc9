// Program orbe-box. "flash": writes an FPGA design into the box's configuration flash.
#pragma once

#include "Bench.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <filesystem>
#include <string>

namespace Pelgar::ORBE::tools {

class Flash_Command {
public:
    // Adds the command and its arguments. The command must live as long as the app.
    explicit Flash_Command(CLI::App& app);

    bool chosen() const { return m_command->parsed(); }

    // Looks at the file before anything else happens. Throws std::invalid_argument when it does not exist,
    // holds nothing, or does not fit where it shall go.
    void check_arguments();

    // Asks, writes, and answers the program's exit code: 0 written, 1 not written or only partly.
    int run(const Bench& bench) const;

private:
    CLI::App* m_command;
    std::string m_path;
    std::filesystem::path m_file; // absolute
    std::uint64_t m_size = 0;     // in bytes
    std::uint32_t m_address = 0;
    bool m_yes = false;
};

} // namespace Pelgar::ORBE::tools
