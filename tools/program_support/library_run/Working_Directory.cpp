#include "library_run/Working_Directory.h"

#include <exception>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Pelgar::ORBE::tools {

namespace {

constexpr const char* simulation_switch = "ORBE_DFGMZ_ADAPTER_SIM";
constexpr int most_attempts = 100;

std::filesystem::path make_directory(const std::string& prefix) {
    std::random_device random;
    for (int attempt = 0; attempt < most_attempts; ++attempt) {
        const auto path = std::filesystem::temp_directory_path() / (prefix + std::to_string(random()));
        if (std::filesystem::create_directory(path)) {
            return path;
        }
    }
    throw std::runtime_error("no free name for a temporary directory");
}

} // namespace

Working_Directory::Working_Directory(const std::string& prefix)
    : m_home(std::filesystem::current_path()), m_path(make_directory(prefix)) {
    try {
        std::filesystem::current_path(m_path);
    } catch (const std::exception&) {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
        throw;
    }
}

Working_Directory::~Working_Directory() {
    std::error_code ignored;
    std::filesystem::current_path(m_home, ignored);
    if (!m_keep) {
        std::filesystem::remove_all(m_path, ignored);
        std::filesystem::remove(output_path(), ignored);
    }
}

void Working_Directory::write_switch(const char* name, const std::string& line) const {
    std::ofstream file(m_path / name);
    file << line << "\n";
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write into '" + m_path.string() + "'");
    }
}

void Working_Directory::name_recording(const std::filesystem::path& recording) const {
    write_switch(simulation_switch, std::filesystem::absolute(recording).string());
}

std::filesystem::path Working_Directory::output_path() const {
    std::filesystem::path path = m_path;
    path += ".log";
    return path;
}

} // namespace Pelgar::ORBE::tools
