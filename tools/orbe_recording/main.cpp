// Program orbe-recording: makes raw recordings of the box's stream, and calibration files, looks into
// recordings, and writes them in other formats.
// Exit codes: 0 done, 1 failed or something is wrong with the recording, 2 wrong arguments or a recording
// that cannot be read, 130 stopped by the user.
#include "Calibration_Command.h"
#include "Check_Command.h"
#include "Export_Command.h"
#include "Make_Command.h"
#include "command_line/Program.h"

int main(int argc, char** argv) {
    using namespace Pelgar::ORBE;

    tools::Program program("orbe-recording", "Raw recordings of the ORBE acquisition box");
    program.app().require_subcommand(1);
    program.app().footer(
        "Exit codes: 0 done, 1 failed or something is wrong with the recording, 2 wrong arguments or "
        "a file that is no recording, 130 stopped by the user. The help of each command "
        "(orbe-recording make --help) tells more.");
    const recording::Make_Command make(program.app());
    const recording::Check_Command check(program.app());
    const recording::Calibration_Command calibration(program.app());
    const recording::Export_Command export_command(program.app());
    return program.run(argc, argv, [&] {
        if (make.chosen()) {
            return make.run();
        }
        if (export_command.chosen()) {
            return export_command.run();
        }
        return check.chosen() ? check.run() : calibration.run();
    });
}
