// Tools, recorder. Repairs a recording in the binary format of the Open Ephys GUI. One thread; blocks on the
// disk.
#pragma once

#include "description/Recording_Description.h"
#include "repair/Folder_Repair.h"

#include <filesystem>

namespace Pelgar::ORBE::recorder {

// Whole samples, a number and a time for each, events of samples that are there, and a structure that names
// the streams that have samples.
Stream_Lengths repair_open_ephys(const std::filesystem::path& folder,
                                 const Recording_Description& description, Folder_Repair& repair);

} // namespace Pelgar::ORBE::recorder
