// Tools, recorder. The files of a recording in the format of SpikeGLX: their names and the text of their
// metadata. Any thread; nothing blocks.
#pragma once

#include "description/Recording_Description.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recorder {

struct SpikeGLX_Stream {
    enum class Kind : std::uint8_t { ap, lfp, adc };

    Kind kind;
    std::size_t probe; // its place in the description
    std::string name;  // "imec0.ap", "imec0.lf", "obx0"
    std::filesystem::path data_path;
    std::filesystem::path meta_path;
    std::size_t column_count; // of a sample, the status among them
    int sample_rate;
};

// The run's name for a recording in this folder that has none yet.
std::string spikeglx_run_name(const std::filesystem::path& folder);

// The files of a recording in this folder.
std::vector<SpikeGLX_Stream> spikeglx_streams(const std::filesystem::path& folder,
                                              const Recording_Description& description);

// Lines "key=value", for a data file of so many bytes.
std::string spikeglx_metadata(const SpikeGLX_Stream& stream, const Recording_Description& description,
                              std::uint64_t bytes);

// The same text with another number of bytes, and all other lines as they are.
std::string with_file_size(const std::string& metadata, const SpikeGLX_Stream& stream, std::uint64_t bytes);

} // namespace Pelgar::ORBE::recorder
