#include "View_Program.h"

#include "View_Command.h"
#include "command_line/Program.h"

namespace Pelgar::ORBE::view {

int run_view_program(int argc, const char* const* argv) {
    tools::Program program("orbe-view",
                           "Shows the data of the ORBE acquisition box on a page in the browser");
    program.app().footer(
        "Open the printed address in a browser of this machine; the page's key ? tells its keys. Pages that "
        "are "
        "slow get fewer pictures, and nothing else notices. Ctrl-C ends the program.\n\n"
        "Examples:\n"
        "  orbe-view ten-seconds.bin\n"
        "  orbe-view monday                      (while orbe-record writes it, or afterwards)\n"
        "  orbe-view --box\n"
        "  orbe-view --simulation ten-seconds.bin\n\n"
        "Exit codes: 0 stopped by the user, 1 there is nothing to show, 2 wrong arguments.");
    const View_Command view(program.app());
    return program.run(argc, argv, [&] { return view.run(); });
}

} // namespace Pelgar::ORBE::view
