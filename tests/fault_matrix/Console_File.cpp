#include "Console_File.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <sstream>
#include <stdexcept>
#include <unistd.h>

namespace Pelgar::ORBE::test {

Console_File::Console_File() : m_output(::dup(STDOUT_FILENO)), m_error(::dup(STDERR_FILENO)), m_file(-1) {
    // Without a name; it goes with the last descriptor.
    std::FILE* const file = std::tmpfile();
    if (m_output < 0 || m_error < 0 || file == nullptr) {
        throw std::runtime_error("no file for what is printed");
    }
    m_file = ::dup(::fileno(file));
    std::fclose(file);
    // Written at its end by several threads, read by one from its beginning.
    ::fcntl(m_file, F_SETFL, O_APPEND);
    std::fflush(nullptr);
    ::dup2(m_file, STDOUT_FILENO);
    ::dup2(m_file, STDERR_FILENO);
    // Whole lines, as at a terminal: what both streams bring would mix otherwise.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

Console_File::~Console_File() {
    std::fflush(nullptr);
    ::dup2(m_output, STDOUT_FILENO);
    ::dup2(m_error, STDERR_FILENO);
    ::close(m_output);
    ::close(m_error);
    ::close(m_file);
}

std::vector<std::string> Console_File::take_lines() {
    std::fflush(nullptr);
    std::string text;
    std::array<char, 65536> piece{};
    off_t at = 0;
    for (ssize_t got = 0; (got = ::pread(m_file, piece.data(), piece.size(), at)) > 0; at += got) {
        text.append(piece.data(), static_cast<std::size_t>(got));
    }
    if (::ftruncate(m_file, 0) != 0) {
        throw std::runtime_error("the file for what is printed cannot be emptied");
    }
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

void Console_File::say(const std::string& text) const {
    static_cast<void>(!::write(m_error, text.data(), text.size()));
}

} // namespace Pelgar::ORBE::test
