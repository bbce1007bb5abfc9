// Program orbe-view, all of it but its `main`, so that tests can run it on a modelled box. Main thread.
#pragma once

namespace Pelgar::ORBE::view {

// Does what the arguments say, until the user stops it, and answers the program's exit code: 0 stopped by the
// user, 1 there is nothing to show, 2 wrong arguments.
int run_view_program(int argc, const char* const* argv);

} // namespace Pelgar::ORBE::view
