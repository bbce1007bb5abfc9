#include "command_line/Help_Formatter.h"

#include "terminal/Terminal.h"
#include "terminal/Text_Format.h"

#include <algorithm>

namespace Pelgar::ORBE::tools {

namespace {

constexpr int output_descriptor = 1;
constexpr std::size_t widest_help = 100;
constexpr std::size_t widest_names = 30;
// On a narrow terminal what is said of a name stands below it.
constexpr std::size_t narrow = 60;
constexpr std::size_t narrow_margin = 6;

} // namespace

Help_Formatter::Help_Formatter() : m_width(std::min(terminal::width(output_descriptor), widest_help)) {
    column_width(m_width < narrow ? narrow_margin : widest_names);
}

std::string Help_Formatter::make_description(const CLI::App* app) const {
    return wrapped(CLI::Formatter::make_description(app), m_width);
}

std::string Help_Formatter::make_footer(const CLI::App* app) const {
    return wrapped(CLI::Formatter::make_footer(app), m_width, 2);
}

std::string Help_Formatter::make_subcommand(const CLI::App* command) const {
    return entry(command->get_display_name(true), command->get_description());
}

std::string Help_Formatter::make_option(const CLI::Option* option, bool is_positional) const {
    return entry(make_option_name(option, is_positional) + make_option_opts(option),
                 make_option_desc(option));
}

std::string Help_Formatter::entry(const std::string& name, const std::string& description) const {
    const std::size_t margin = get_column_width();
    const std::size_t room = std::max(m_width, 2 * margin) - margin;
    std::stringstream out;
    out << wrapped("  " + name, m_width, 2);
    if (!description.empty()) {
        const std::size_t used = name.size() + 2;
        out << (used < margin ? std::string(margin - used, ' ') : "\n" + std::string(margin, ' '));
        out << CLI::detail::find_and_replace(wrapped(description, room), "\n",
                                             "\n" + std::string(margin, ' '));
    }
    out << "\n";
    return out.str();
}

} // namespace Pelgar::ORBE::tools
