// host_road_program EXPECTATION: a host in a process of its own, which plays a host on the box that is
// present. Exits with 0, or with the number of the step that it has ended at.
#include "Host_Road.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

namespace {

constexpr int no_expectation = 100;

// The whole file, aligned to 8 bytes; empty when it cannot be read.
std::vector<std::uint64_t> read_file(const std::filesystem::path& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error) {
        return {};
    }
    std::vector<std::uint64_t> words(static_cast<std::size_t>(size) / sizeof(std::uint64_t));
    std::ifstream(path, std::ios::binary)
        .read(reinterpret_cast<char*>(words.data()), static_cast<std::streamsize>(size));
    return words;
}

} // namespace

int main(int argc, char** argv) {
    using namespace Pelgar::ORBE::host;
    if (argc != 2) {
        std::fprintf(stderr, "usage: host_road_program EXPECTATION\n");
        return no_expectation;
    }
    const std::vector<std::uint64_t> expectation = read_file(argv[1]);
    const Host_Road_Result result =
        run_host_road(expectation.data(), expectation.size() * sizeof(std::uint64_t), END_BY_STOPPING);
    std::printf("step %d, port %d, packet %u, byte %u\n", static_cast<int>(result.step), result.port,
                static_cast<unsigned>(result.packet), static_cast<unsigned>(result.byte));
    return result.step;
}
