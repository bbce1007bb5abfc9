#include "Process_State.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include <unistd.h>

namespace Pelgar::ORBE::test {

namespace {

namespace fs = std::filesystem;

std::uint64_t size_of(const char* path) {
    std::error_code error;
    const auto size = fs::file_size(path, error);
    return error ? 0 : size;
}

std::uint64_t entries(const char* path) {
    return static_cast<std::uint64_t>(std::distance(fs::directory_iterator(path), fs::directory_iterator()));
}

std::uint64_t resident() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

Process_State Process_State::now(const char* printed) {
    return {.resident_bytes = resident(),
            .handles = entries("/proc/self/fd"),
            .threads = entries("/proc/self/task"),
            .log_bytes = size_of("ORBE.log"),
            .printed_bytes = size_of(printed)};
}

} // namespace Pelgar::ORBE::test
