// Tools, recorder. Brings a recorded folder into the state that its readers expect, whatever ended the
// recording: whole samples, equally long tables, metadata that say how much there is. Blocks on the disk.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Pelgar::ORBE::recorder {

// Returns what was changed, one line a change, none for a folder that is as it should be, of which no byte is
// touched. Throws std::runtime_error or std::system_error, with the name of what it is about, for a folder
// that is no recording or cannot be changed.
std::vector<std::string> repair_recording(const std::filesystem::path& folder);

} // namespace Pelgar::ORBE::recorder
