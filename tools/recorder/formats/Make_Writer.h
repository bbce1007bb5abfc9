// Tools, recorder. The formats that packets are written in, and what writes them. Blocks on the disk.
#pragma once

#include "description/Recording_Description.h"
#include "formats/A_Recording_Writer.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Pelgar::ORBE::recorder {

enum class Format : std::uint8_t { spikeglx, open_ephys };

// As users write them: "spikeglx" and "open-ephys".
std::string format_name(Format format);
std::optional<Format> format_of(std::string_view name);

// Makes the folder, where there is none, with all metadata and the description in it. Throws
// std::system_error with the file's name; also when the folder holds a recording already.
std::unique_ptr<A_Recording_Writer> make_writer(Format format, const std::filesystem::path& folder,
                                                const Recording_Description& description);

} // namespace Pelgar::ORBE::recorder
