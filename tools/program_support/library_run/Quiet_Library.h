// Tools, what all programs share. Keeps what the library prints away from the user: while the object lives,
// the process's standard output and standard error go to files. The user still sees what goes to the
// descriptor that the object keeps.
#pragma once

#include <filesystem>

namespace Pelgar::ORBE::tools {

class Quiet_Library {
public:
    // Appends to both files, which may be one. Throws std::runtime_error when one cannot be written.
    Quiet_Library(const std::filesystem::path& output, const std::filesystem::path& errors);
    // Puts both streams back.
    ~Quiet_Library();
    Quiet_Library(const Quiet_Library&) = delete;
    Quiet_Library& operator=(const Quiet_Library&) = delete;

    // Where the user sees what the program prints, and errors and progress.
    int user_output_descriptor() const { return m_user_output; }

    int user_error_descriptor() const { return m_user_error; }

private:
    int m_user_output = -1;
    int m_user_error = -1;
};

} // namespace Pelgar::ORBE::tools
