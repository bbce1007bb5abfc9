// Tools, recorder. Repairs a recording in the format of SpikeGLX. One thread; blocks on the disk.
#pragma once

#include "description/Recording_Description.h"
#include "repair/Folder_Repair.h"

#include <filesystem>

namespace Pelgar::ORBE::recorder {

// Whole samples, no data file without any, and metadata that say how much there is.
Stream_Lengths repair_spikeglx(const std::filesystem::path& folder, const Recording_Description& description,
                               Folder_Repair& repair);

} // namespace Pelgar::ORBE::recorder
