#include "command_line/Program.h"

#include "command_line/Help_Formatter.h"
#include "command_line/Version.h"
#include "terminal/Exit_Codes.h"
#include "terminal/Standard_Output.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::tools {

Program::Program(std::string name, const std::string& description)
    : m_name(std::move(name)), m_app(description, m_name) {
    guard_standard_streams();
    m_app.formatter(std::make_shared<Help_Formatter>());
    m_app.set_version_flag("--version", version_text(m_name));
}

int Program::run(int argc, const char* const* argv, const std::function<int()>& work) {
    return finish_standard_output(m_name.c_str(), attempt(argc, argv, work));
}

int Program::attempt(int argc, const char* const* argv, const std::function<int()>& work) {
    try {
        m_app.parse(argc, argv);
        return work();
    } catch (const CLI::ParseError& error) {
        return m_app.exit(error) == 0 ? exit_codes::done : exit_codes::wrong_arguments;
    } catch (const std::invalid_argument& error) {
        std::fprintf(stderr, "%s: %s\n", m_name.c_str(), error.what());
        return exit_codes::wrong_arguments;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", m_name.c_str(), error.what());
        return exit_codes::failed;
    }
}

} // namespace Pelgar::ORBE::tools
