// Program orbe-box. Runs the library where it disturbs nobody: in a working directory of its own, with its
// log and its printed lines in files there. One a process.
#pragma once

#include "Error_Watch.h"
#include "library_run/Quiet_Library.h"
#include "library_run/Working_Directory.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace Pelgar::ORBE::tools {

class Library_Run {
public:
    // Throws as Working_Directory does.
    Library_Run();
    // Ends the log and, unless they are to be kept, removes all files.
    ~Library_Run();
    Library_Run(const Library_Run&) = delete;
    Library_Run& operator=(const Library_Run&) = delete;

    // Does `operation` with the library's lines going to the files, and returns its result.
    template <typename Operation>
    auto quietly(Operation operation) {
        return quietly_with_user([&](const Quiet_Library& /*user*/) { return operation(); });
    }

    // As above; `operation` gets the object that knows where the user still sees what is written.
    template <typename Operation>
    auto quietly_with_user(Operation operation) {
        const Quiet_Library redirection(m_output, m_errors);
        return operation(redirection);
    }

    // The last error that the library has printed, or else logged, since the last call; empty when there was
    // none.
    std::string take_error();

    void keep() { m_directory.keep(); }

    const std::filesystem::path& path() const { return m_directory.path(); }

private:
    Working_Directory m_directory;
    std::filesystem::path m_output;
    std::filesystem::path m_errors;
    std::filesystem::path m_log;
    std::uintmax_t m_output_read = 0; // in bytes
    std::uintmax_t m_errors_read = 0;
    Error_Watch m_watch;
};

} // namespace Pelgar::ORBE::tools
