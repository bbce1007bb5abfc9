#include "Temp_Directory.h"

#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Pelgar::ORBE::test {

Temp_Directory::Temp_Directory() {
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        m_path = std::filesystem::temp_directory_path() / ("orbe-test-" + std::to_string(random()));
        if (std::filesystem::create_directory(m_path)) {
            return;
        }
    }
    throw std::runtime_error("no free name for a temporary directory");
}

Temp_Directory::~Temp_Directory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

} // namespace Pelgar::ORBE::test
