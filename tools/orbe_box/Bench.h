// Program orbe-box. What every command works with: how to reach the box, whom to ask, and where the library's
// lines go.
#pragma once

#include "Box_Environment.h"
#include "Library_Run.h"

#include <string>

namespace Pelgar::ORBE::tools {

struct Bench {
    const Box_Environment& environment;
    Library_Run& run;
    bool simulation = false;
    // Where the self tests find their recordings in simulation mode; empty: where they are installed.
    std::string recordings;
};

} // namespace Pelgar::ORBE::tools
