// Tools, what all programs share. Lays out a program's help so that it fits the terminal. Main thread.
#pragma once

#include <CLI/CLI.hpp>

#include <cstddef>
#include <string>

namespace Pelgar::ORBE::tools {

class Help_Formatter : public CLI::Formatter {
public:
    Help_Formatter();

    std::string make_description(const CLI::App* app) const override;
    std::string make_footer(const CLI::App* app) const override;
    std::string make_subcommand(const CLI::App* command) const override;
    std::string make_option(const CLI::Option* option, bool is_positional) const override;

private:
    // A name and what is said of it, in two columns.
    std::string entry(const std::string& name, const std::string& description) const;

    std::size_t m_width;
};

} // namespace Pelgar::ORBE::tools
