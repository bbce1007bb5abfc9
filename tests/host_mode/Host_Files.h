// Test support, host mode. What a lab puts into the working directory.
#pragma once

#include "generator/Recording_Generator.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

inline void select_host_mode(const std::string& line) {
    std::ofstream("ORBE_HOST_MODE", std::ios::trunc) << line << "\n";
}

// Ramps on all channels, by which Port_Check sees every sample.
inline recording::Recording_Options ramp_options(std::vector<unsigned> ports = {1, 2, 3, 4}) {
    recording::Recording_Options options;
    options.seed = 77;
    options.ports = std::move(ports);
    options.signals = {{recording::Signal_Kind::ramp, recording::every_channel()}};
    return options;
}

// Writes a recording into the working directory and answers where it lies.
inline std::filesystem::path write_recording(const recording::Recording_Options& options) {
    std::filesystem::path path = std::filesystem::absolute("host_recording.bin");
    std::ofstream file(path, std::ios::binary);
    recording::Recording_Generator generator(options);
    for (auto piece = generator.next(); !piece.empty(); piece = generator.next()) {
        file.write(reinterpret_cast<const char*>(piece.data()), static_cast<std::streamsize>(piece.size()));
    }
    return path;
}

// The same, and has the library play it.
inline void select_recording(const recording::Recording_Options& options) {
    const std::filesystem::path path = write_recording(options);
    std::ofstream("ORBE_DFGMZ_ADAPTER_SIM", std::ios::trunc) << path.string() << "\n";
}

} // namespace Pelgar::ORBE::test
