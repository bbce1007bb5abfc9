// Layer: façade. Keeps what a host has in "raw_data.bin", the file that every opened basestation makes in the
// working directory. Called on the host's threads; blocks for the file system only.
#pragma once

#include "adapter/File_Switch.h"

namespace Pelgar::ORBE::npoe_adapter {

// Moves a "raw_data.bin" that is not empty to a name with the time of its last change,
// "raw_data_2026-11-21_18-30-05.bin", and logs that; a name that is taken is counted on ("..._2.bin"). The
// file stays where it is when the switch for simulation names it, or names a recording that cannot be read,
// and, with an error in the log, when it cannot be moved. Nothing ever empties it.
void keep_raw_data_file(const File_Switch& simulation);

} // namespace Pelgar::ORBE::npoe_adapter
