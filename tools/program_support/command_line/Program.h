// Tools, what all programs share. The frame of a program with a command line: help, version, exit codes, and
// the one place where errors become text and an exit code. Main thread.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace Pelgar::ORBE::tools {

class Program {
public:
    Program(std::string name, const std::string& description);

    // To be given arguments and commands.
    CLI::App& app() { return m_app; }

    // Reads the arguments, does `work` and answers the program's exit code: that of the work, 2 for arguments
    // that cannot be read and for std::invalid_argument, 1 for every other exception and when what was
    // printed is lost.
    int run(int argc, const char* const* argv, const std::function<int()>& work);

private:
    int attempt(int argc, const char* const* argv, const std::function<int()>& work);

    std::string m_name;
    CLI::App m_app;
};

} // namespace Pelgar::ORBE::tools
