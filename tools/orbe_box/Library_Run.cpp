#include "Library_Run.h"

#include <loguru.hpp>

#include <array>
#include <fstream>
#include <sstream>
#include <string_view>
#include <utility>

namespace Pelgar::ORBE::tools {

namespace {

// What tells of a failure on standard output, where other text may stand before it in the line.
constexpr std::string_view unopened_recording = "Sim file open error";
constexpr std::array<std::string_view, 3> failure_starts{"Exception", unopened_recording, "Frq check failed"};

// The part of the line that tells of a failure; empty when none does.
std::string failure_in(const std::string& line) {
    for (const std::string_view start : failure_starts) {
        if (const std::size_t at = line.find(start); at != std::string::npos) {
            return line.substr(at);
        }
    }
    return {};
}

std::string whole(const std::string& line) {
    return line;
}

// What `part` finds last in the lines behind the first `bytes_read` bytes; counts the bytes up to the end.
std::string last_line_of(const std::filesystem::path& path, std::uintmax_t& bytes_read,
                         std::string (*part)(const std::string& line)) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(bytes_read));
    std::ostringstream content;
    content << file.rdbuf();
    std::istringstream text(content.str());
    bytes_read += content.view().size();
    std::string last;
    for (std::string line; std::getline(text, line);) {
        if (std::string found = part(line); !found.empty()) {
            last = std::move(found);
        }
    }
    return last;
}

} // namespace

Library_Run::Library_Run()
    : m_directory("orbe-box-"), m_output(m_directory.path() / "output.txt"),
      m_errors(m_directory.path() / "errors.txt"), m_log(m_directory.path() / "ORBE.log") {
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    loguru::add_file(m_log.string().c_str(), loguru::Truncate, loguru::Verbosity_MAX);
}

Library_Run::~Library_Run() {
    loguru::remove_callback(m_log.string().c_str());
}

std::string Library_Run::take_error() {
    // All are read, so that none is left for the next call. What is printed is closer to the cause than what
    // is logged on the way.
    const std::string logged = m_watch.take();
    const std::string error = last_line_of(m_errors, m_errors_read, whole);
    const std::string failure = last_line_of(m_output, m_output_read, failure_in);
    // That text has no end of line, so that the next one stands right behind it; and the log knows the
    // reason.
    if (failure.starts_with(unopened_recording) && !logged.empty()) {
        return logged;
    }
    if (!failure.empty()) {
        return failure;
    }
    return error.empty() ? logged : error;
}

} // namespace Pelgar::ORBE::tools
