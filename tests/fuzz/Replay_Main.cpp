// Fuzzing: runs a target over committed inputs, without libFuzzer, as part of the ordinary tests.
#include "Fuzz_Target.h"

#include "Printed_Output.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

std::vector<std::uint8_t> read_file(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return {text.begin(), text.end()};
}

std::vector<std::filesystem::path> files_in(const std::filesystem::path& directory) {
    std::vector<std::filesystem::path> paths;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(directory, missing)) {
        if (entry.is_regular_file()) {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS_DIRECTORY\n", argv[0]);
        return 2;
    }
    const auto paths = files_in(argv[1]);
    if (paths.empty()) {
        std::fprintf(stderr, "no inputs in '%s'\n", argv[1]);
        return 1;
    }
    for (const auto& path : paths) {
        std::printf("%s\n", path.filename().c_str());
        std::fflush(stdout);
        const auto input = read_file(path);
        const Pelgar::ORBE::test::Printed_Output silence;
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    std::printf("%zu inputs\n", paths.size());
    return 0;
}
