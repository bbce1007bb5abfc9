// Program orbe-view. Finds out what a file or a folder is a recording of. Main thread; blocks on the disk.
#pragma once

#include "sources/A_Recording.h"

#include <filesystem>
#include <memory>

namespace Pelgar::ORBE::view {

// A folder that orbe-record writes, or has written, may still be growing, and so may a run of SpikeGLX.
// Throws std::runtime_error that says what is wrong, and std::system_error for what cannot be read.
std::unique_ptr<A_Recording> choose_recording(const std::filesystem::path& path);

} // namespace Pelgar::ORBE::view
