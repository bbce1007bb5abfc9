#include "library_run/Quiet_Library.h"

#include "terminal/File_Descriptors.h"
#include "terminal/Standard_Output.h"

#include <cstdio>
#include <stdexcept>

namespace Pelgar::ORBE::tools {

namespace {

constexpr int output_descriptor = 1;
constexpr int error_descriptor = 2;

void flush() {
    flush_standard_output();
    std::fflush(nullptr);
}

int open_file(const std::filesystem::path& file) {
    const int descriptor = descriptors::open_to_append(file);
    if (descriptor < 0) {
        throw std::runtime_error("cannot write '" + file.string() + "'");
    }
    return descriptor;
}

// Makes `descriptor` write what goes to `target`, of which nobody else keeps hold.
void redirect(int descriptor, int target) {
    descriptors::duplicate_onto(target, descriptor);
    descriptors::close(target);
}

} // namespace

Quiet_Library::Quiet_Library(const std::filesystem::path& output, const std::filesystem::path& errors) {
    const int output_file = open_file(output);
    int error_file = -1;
    try {
        error_file = open_file(errors);
    } catch (...) {
        descriptors::close(output_file);
        throw;
    }
    m_user_output = descriptors::duplicate(output_descriptor);
    m_user_error = descriptors::duplicate(error_descriptor);
    flush();
    redirect(output_descriptor, output_file);
    redirect(error_descriptor, error_file);
}

Quiet_Library::~Quiet_Library() {
    flush();
    redirect(output_descriptor, m_user_output);
    redirect(error_descriptor, m_user_error);
}

} // namespace Pelgar::ORBE::tools
