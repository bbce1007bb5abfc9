// Tools, recorder. The description of a recording as the file that lies in its folder, whatever the format.
// Blocks on the disk.
#pragma once

#include "description/Recording_Description.h"

#include <filesystem>
#include <string>

namespace Pelgar::ORBE::recorder {

inline constexpr const char* description_file_name = "orbe_recording.json";

// As JSON. `format` is what the folder holds: "spikeglx", "open-ephys" or "raw".
std::string to_json(const Recording_Description& description, const std::string& format);

struct Described_Folder {
    std::string format;
    Recording_Description description;
};

// Throws std::runtime_error that says what is wrong with the text.
Described_Folder from_json(const std::string& text);

// Throws std::system_error with the file's name when the disk will not have it.
void write_description(const std::filesystem::path& folder, const std::string& format,
                       const Recording_Description& description);

// Throws std::system_error when there is no such file, std::runtime_error with its name when it is damaged.
Described_Folder read_description(const std::filesystem::path& folder);

} // namespace Pelgar::ORBE::recorder
