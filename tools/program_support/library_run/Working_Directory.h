// Tools, what all programs share. A fresh directory in which the library runs: it looks for its switch files,
// and writes its log, in the working directory.
#pragma once

#include <filesystem>
#include <string>

namespace Pelgar::ORBE::tools {

class Working_Directory {
public:
    // Makes a directory whose name begins with `prefix` and goes there. Throws std::runtime_error or
    // std::filesystem::filesystem_error when that cannot be done.
    explicit Working_Directory(const std::string& prefix);
    // Goes back, and removes the directory and the library's output unless they are to be kept.
    ~Working_Directory();
    Working_Directory(const Working_Directory&) = delete;
    Working_Directory& operator=(const Working_Directory&) = delete;

    // Writes a switch file of the library's with one line. Throws std::runtime_error.
    void write_switch(const char* name, const std::string& line) const;

    // Makes the library play `recording`: writes the switch file that names it. Throws std::runtime_error.
    void name_recording(const std::filesystem::path& recording) const;

    const std::filesystem::path& path() const { return m_path; }

    // Beside the directory: where the library's output goes.
    std::filesystem::path output_path() const;

    void keep() { m_keep = true; }

private:
    std::filesystem::path m_home;
    std::filesystem::path m_path;
    bool m_keep = false;
};

} // namespace Pelgar::ORBE::tools
