#include "description/Whole_File.h"

#include <cerrno>
#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

namespace Pelgar::ORBE::recorder {

namespace {

// Windows replaces no file that is open. Whoever reads one of these has it open for a moment.
#ifdef _WIN32
constexpr int tries = 1000;
#else
constexpr int tries = 1;
#endif
constexpr auto between_tries = std::chrono::milliseconds(5);

std::error_code replace(const std::filesystem::path& file, const std::filesystem::path& by) {
    std::error_code error;
    std::filesystem::rename(by, file, error);
    for (int i = 1; i < tries && error == std::errc::permission_denied; ++i) {
        std::this_thread::sleep_for(between_tries);
        std::filesystem::rename(by, file, error);
    }
    return error;
}

} // namespace

std::system_error file_error(const std::filesystem::path& path, const std::string& what) {
    const int error = errno != 0 ? errno : EIO;
    return {error, std::generic_category(), what + " '" + path.string() + "'"};
}

std::string read_file(const std::filesystem::path& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw file_error(path, "cannot read");
    }
    std::ostringstream content;
    if (file.peek() != std::ifstream::traits_type::eof()) {
        content << file.rdbuf();
    }
    if (file.bad()) {
        throw file_error(path, "cannot read");
    }
    return content.str();
}

void write_file(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::path temporary = path;
    temporary += ".partial";
    errno = 0;
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    if (!file) {
        const std::system_error error = file_error(path, "cannot write");
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
        throw error;
    }
    if (const std::error_code error = replace(path, temporary)) {
        throw std::system_error(error, "cannot write '" + path.string() + "'");
    }
}

} // namespace Pelgar::ORBE::recorder
