// Tools, recorder. Repairs the table of gaps, which may know of gaps that the data end before. One thread;
// blocks on the disk.
#pragma once

#include "repair/Folder_Repair.h"

#include <filesystem>

namespace Pelgar::ORBE::recorder {

// Leaves lines that are whole, of streams and samples that are there.
void repair_gap_table(const std::filesystem::path& folder, const Stream_Lengths& lengths,
                      Folder_Repair& repair);

} // namespace Pelgar::ORBE::recorder
