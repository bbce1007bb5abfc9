// Program orbe-box. The self tests of a port, by name.
#pragma once

#include "controller/C_ORBE_Controller_Library.h"

#include <array>
#include <string>

namespace Pelgar::ORBE::tools {

struct Self_Test {
    // Runs the test on a port (index 0..3) whose probe is initialised, and returns whether it passed. May say
    // in `why` what it has found; may block for seconds.
    using Run = bool (*)(ORBE_Controller_Library& controller, unsigned port, std::string& why);

    const char* name;
    const char* subject;
    const char* failure; // what a failure means
    bool needs_box;      // tests nothing in simulation
    Run run;
};

// In the order in which they make sense: each needs what those before it have tested.
extern const std::array<Self_Test, 7> self_tests;

} // namespace Pelgar::ORBE::tools
