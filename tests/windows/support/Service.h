// Test support, Windows. A kernel service, from its installation to its removal. Blocks on the service
// manager.
#pragma once

#include <filesystem>
#include <string>

namespace Pelgar::ORBE::test {

class Service {
public:
    // Removes a service of this name that is left from an earlier run, installs the driver under it and
    // starts it. Throws std::system_error.
    Service(std::wstring name, const std::filesystem::path& driver_file);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

private:
    std::wstring m_name;
};

} // namespace Pelgar::ORBE::test
