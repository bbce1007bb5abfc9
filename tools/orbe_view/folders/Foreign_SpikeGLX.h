// Program orbe-view, folders. A run of SpikeGLX itself, which has no description of ours: everything is taken
// from the metadata of its files. Blocks on the disk.
#pragma once

#include "folders/Folder_Layout.h"

#include <cstddef>
#include <filesystem>

namespace Pelgar::ORBE::view {

// Its probes, up to four, in both bands; they must be of the kind that our box takes, whose samples are whole
// steps of the converter and whose gains are set channel by channel. Throws std::runtime_error that says why
// it cannot be shown. A folder that holds more files, which a run of many triggers does not, is not looked
// through to its end.
Folder_Layout foreign_spikeglx_layout(const std::filesystem::path& folder, std::size_t most_files = 20'000);

} // namespace Pelgar::ORBE::view
