// Tools, recorder. The file settings.xml of the Open Ephys GUI, as far as readers look into it: which probe
// is where, and where its electrodes lie. Any thread; nothing blocks.
#pragma once

#include "description/Recording_Description.h"

#include <string>

namespace Pelgar::ORBE::recorder {

std::string open_ephys_settings(const Recording_Description& description);

} // namespace Pelgar::ORBE::recorder
