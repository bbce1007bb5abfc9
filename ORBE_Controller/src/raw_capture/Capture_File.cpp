#include "raw_capture/Capture_File.h"

#include <cerrno>
#include <fstream>
#include <system_error>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace Pelgar::ORBE {

namespace {

bool has_content(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return file && file.peek() != std::ifstream::traits_type::eof();
}

// "raw_data_2.bin" of "raw_data.bin".
std::string numbered(const std::string& name, int number) {
    const std::size_t folder = name.find_last_of("/\\");
    const std::size_t dot = name.find_last_of('.');
    const bool has_ending = dot != std::string::npos && (folder == std::string::npos || dot > folder + 1);
    const std::size_t stem = has_ending ? dot : name.size();
    return name.substr(0, stem) + "_" + std::to_string(number) + name.substr(stem);
}

std::string free_name(const std::string& name) {
    std::string free = name;
    for (int number = 2; has_content(free); ++number) {
        free = numbered(name, number);
    }
    return free;
}

} // namespace

// What has come into the file since it was looked at stays there, since nothing but its end is written to.
Capture_File::Capture_File(const std::string& name)
    : m_name(free_name(name)), m_file(std::fopen(m_name.c_str(), "ab")) {
    if (!m_file) {
        fail(errno);
    }
    // The pieces are large, and what is written shall be in the file.
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
}

void Capture_File::write(std::span<const std::uint8_t> bytes) {
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size()) {
        fail(errno);
    }
    if (is_gone()) {
        fail(ENOENT);
    }
}

void Capture_File::close() {
    errno = 0;
    if (std::fclose(m_file.release()) != 0) {
        fail(errno);
    }
}

void Capture_File::fail(int error) const {
    throw std::system_error(error == 0 ? EIO : error, std::generic_category(), m_name);
}

#if defined(_WIN32)

// An open file cannot be removed here.
bool Capture_File::is_gone() const {
    return false;
}

#else

// What is written into a file without a name is gone with the process.
bool Capture_File::is_gone() const {
    struct stat status {};

    return fstat(fileno(m_file.get()), &status) == 0 && status.st_nlink == 0;
}

#endif

} // namespace Pelgar::ORBE
