// Program orbe-recording. Keeps files from being overwritten by mistake.
#pragma once

#include <filesystem>
#include <vector>

namespace Pelgar::ORBE::recording {

// Whether the files may be written: none of them is there yet, or the user agrees to lose those that are.
// Asks on the terminal and may wait for the answer; without a terminal throws std::runtime_error that names
// the file.
bool may_write(const std::vector<std::filesystem::path>& files);

} // namespace Pelgar::ORBE::recording
