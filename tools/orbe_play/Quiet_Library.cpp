#include "Quiet_Library.h"

#include <cstdio>
#include <iostream>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace Pelgar::ORBE::recording {

namespace {

constexpr int output_descriptor = 1;
constexpr int error_descriptor = 2;

constexpr int owner_only = 0600;

void flush() {
    std::cout.flush();
    std::fflush(nullptr);
}

} // namespace

Quiet_Library::Quiet_Library(const std::filesystem::path& file) {
    const int log = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, owner_only);
    if (log < 0) {
        throw std::runtime_error("cannot write '" + file.string() + "'");
    }
    m_user_output = dup(output_descriptor);
    m_user_error = dup(error_descriptor);
    flush();
    dup2(log, output_descriptor);
    dup2(log, error_descriptor);
    close(log);
}

Quiet_Library::~Quiet_Library() {
    flush();
    dup2(m_user_output, output_descriptor);
    dup2(m_user_error, error_descriptor);
    close(m_user_output);
    close(m_user_error);
}

} // namespace Pelgar::ORBE::recording
