#include "Quiet_Library.h"

#include <cstdio>
#include <iostream>
#include <stdexcept>

#include <fcntl.h>
#if defined(_WIN32)
#include <io.h>
#include <sys/stat.h>
#else
#include <unistd.h>
#endif

namespace Pelgar::ORBE::recording {

namespace {

constexpr int output_descriptor = 1;
constexpr int error_descriptor = 2;

#if defined(_WIN32)
int open_file(const std::filesystem::path& file) {
    return _wopen(file.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC, _S_IREAD | _S_IWRITE);
}

int duplicate(int descriptor) {
    return _dup(descriptor);
}

void replace(int descriptor, int by) {
    _dup2(by, descriptor);
}

void close_descriptor(int descriptor) {
    _close(descriptor);
}
#else
constexpr int owner_only = 0600;

int open_file(const std::filesystem::path& file) {
    return open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, owner_only);
}

int duplicate(int descriptor) {
    return dup(descriptor);
}

void replace(int descriptor, int by) {
    dup2(by, descriptor);
}

void close_descriptor(int descriptor) {
    close(descriptor);
}
#endif

void flush() {
    std::cout.flush();
    std::fflush(nullptr);
}

} // namespace

Quiet_Library::Quiet_Library(const std::filesystem::path& file)
    : m_user_output(duplicate(output_descriptor)), m_user_error(duplicate(error_descriptor)) {
    const int log = open_file(file);
    if (log < 0) {
        throw std::runtime_error("cannot write '" + file.string() + "'");
    }
    flush();
    replace(output_descriptor, log);
    replace(error_descriptor, log);
    close_descriptor(log);
}

Quiet_Library::~Quiet_Library() {
    flush();
    replace(output_descriptor, m_user_output);
    replace(error_descriptor, m_user_error);
    close_descriptor(m_user_output);
    close_descriptor(m_user_error);
}

} // namespace Pelgar::ORBE::recording
