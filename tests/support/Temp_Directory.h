// Test support: a directory that exists as long as the object does.
#pragma once

#include <filesystem>

namespace Pelgar::ORBE::test {

class Temp_Directory {
public:
    Temp_Directory();
    ~Temp_Directory();
    Temp_Directory(const Temp_Directory&) = delete;
    Temp_Directory& operator=(const Temp_Directory&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace Pelgar::ORBE::test
