// Tools, recorder. Writes what a host receives of a raw recording, as fast as the disk and the decoder allow.
// The caller's thread reads and decodes, with the decoder's own threads; a thread a stream writes. Blocks on
// the disk.
#pragma once

#include "description/Recording_Description.h"
#include "formats/A_Recording_Writer.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::recorder {

struct Export_Source {
    std::filesystem::path raw;
    Recording_Description description;
    std::vector<std::optional<std::filesystem::path>> gain_files; // one, or none, a probe
};

// The same bytes as a recorder writes that the box, or the simulation, has sent this recording to. `goes_on`
// is told how many bytes have been read and says whether to go on. Returns false when it said no; what has
// been written so far is finished either way. Throws std::system_error when the disk fails,
// std::runtime_error for what cannot be decoded.
bool export_recording(const Export_Source& source, A_Recording_Writer& writer,
                      const std::function<bool(std::uint64_t)>& goes_on);

// What streams a raw recording begins with: the ports, 1 to 4, and whether the ADC inputs are there.
struct Raw_Content {
    std::vector<int> ports;
    bool has_adc = false;
};

// Throws std::system_error when the file cannot be read, std::runtime_error when it is no recording of the
// box.
Raw_Content raw_content(const std::filesystem::path& raw);

} // namespace Pelgar::ORBE::recorder
