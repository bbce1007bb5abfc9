// Test support: writes gain calibration files, well-formed and otherwise.
#pragma once

#include <cstddef>
#include <fstream>
#include <functional>
#include <string>

namespace Pelgar::ORBE::test {

struct Gain_Calibration_File {
    std::string path = "gain.csv";
    std::string header = "22175715561";
    std::string line_end = "\n";
    std::size_t line_count = 960;
    // The text of factor k (0..7 AP, 8..15 LFP) of an electrode.
    std::function<std::string(std::size_t electrode, std::size_t k)> factor = [](std::size_t, std::size_t) {
        return std::string("1");
    };
    bool last_line_end = true;

    void write() const {
        std::ofstream file(path, std::ios::binary);
        file << header << line_end;
        for (std::size_t electrode = 0; electrode < line_count; ++electrode) {
            file << electrode;
            for (std::size_t k = 0; k < 16; ++k) {
                file << ',' << factor(electrode, k);
            }
            if (electrode + 1 < line_count || last_line_end) {
                file << line_end;
            }
        }
    }
};

} // namespace Pelgar::ORBE::test
