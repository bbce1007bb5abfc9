#include "generator/Output_File.h"

#include <cerrno>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Pelgar::ORBE::recording {

namespace {

// Null, with the reason in errno, when it cannot be opened.
std::FILE* open_new(const std::filesystem::path& path) {
#if defined(_WIN32)
    // Not every C library of this system knows how to insist on a new file; the name itself is new.
    return _wfopen(path.c_str(), L"wb");
#else
    return std::fopen(path.c_str(), "wbx");
#endif
}

} // namespace

Output_File::Output_File(const std::filesystem::path& path) : m_name(path.string()) {
    std::error_code error;
    // Behind a symbolic link it is the file itself that is replaced.
    m_path = std::filesystem::weakly_canonical(path, error);
    if (error) {
        m_path = path;
    }
    const auto status = std::filesystem::status(m_path, error);
    if (std::filesystem::is_directory(status)) {
        fail(EISDIR);
    }
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw std::runtime_error("cannot write '" + m_name + "': it is not a regular file");
    }
    m_temporary = m_path;
    m_temporary += ".partial-" + std::to_string(std::random_device()());
    m_file.reset(open_new(m_temporary));
    if (!m_file) {
        fail(errno);
    }
    // Whole parts of several MiB are written at once; another buffer would only copy them.
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
}

Output_File::~Output_File() {
    m_file.reset();
    if (!m_temporary.empty()) {
        std::error_code ignored;
        std::filesystem::remove(m_temporary, ignored);
    }
}

void Output_File::write(std::span<const std::uint8_t> bytes) {
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size()) {
        fail(errno);
    }
}

void Output_File::commit() {
    if (std::fclose(m_file.release()) != 0) {
        fail(errno);
    }
    std::error_code error;
    std::filesystem::rename(m_temporary, m_path, error);
    if (error) {
        fail(error.value());
    }
    m_temporary.clear();
}

void Output_File::fail(int error) const {
    throw std::runtime_error("cannot write '" + m_name + "': " + std::generic_category().message(error));
}

} // namespace Pelgar::ORBE::recording
