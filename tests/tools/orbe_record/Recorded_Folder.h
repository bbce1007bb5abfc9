// Test support, recorder. What a recorded folder holds, and what the raw recording holds that was played for
// it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

// The samples of a stream, row by row.
struct Recorded_Samples {
    std::size_t columns = 0;
    std::vector<std::int16_t> values;

    std::size_t rows() const { return columns == 0 ? 0 : values.size() / columns; }
};

// The probe's AP or LFP band (384 channels), and the eight ADC inputs of the box; `probe` counts from 0. The
// formats' further columns are left out. Empty where there is no such file.
Recorded_Samples recorded_probe(const std::filesystem::path& folder, unsigned probe, bool is_lfp);
Recorded_Samples recorded_inputs(const std::filesystem::path& folder);

// The same of a raw recording, by another reader than the library. Signed; of the whole blocks.
Recorded_Samples made_probe(const std::string& recording, unsigned port, bool is_lfp);
Recorded_Samples made_inputs(const std::string& recording);

// Whether all of it, and at least so many rows, is what was made from row `first` on; says what is not.
std::string difference(const Recorded_Samples& recorded, const Recorded_Samples& made, std::size_t first,
                       std::size_t least_rows);

} // namespace Pelgar::ORBE::test
