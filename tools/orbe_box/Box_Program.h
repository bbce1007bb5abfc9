// Program orbe-box, all of it but its `main`.
#pragma once

#include "Box_Environment.h"

namespace Pelgar::ORBE::tools {

// Does what the arguments say and answers the program's exit code: 0 done, 1 failed, 2 wrong arguments.
int run_box_program(int argc, const char* const* argv, const Box_Environment& environment);

} // namespace Pelgar::ORBE::tools
