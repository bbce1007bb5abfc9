// Program orbe-recording: makes raw recordings of the box's stream, and calibration files, and looks into
// recordings.
// Exit codes: 0 done, 1 failed or something is wrong with the recording, 2 wrong arguments or a recording
// that cannot be read, 130 stopped by the user.
#include "Calibration_Command.h"
#include "Check_Command.h"
#include "Make_Command.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    using namespace Pelgar::ORBE::recording;

    constexpr int failed = 1;
    constexpr int wrong_arguments = 2;

    CLI::App app("Raw recordings of the ORBE acquisition box");
    app.require_subcommand(1);
    const Make_Command make(app);
    const Check_Command check(app);
    const Calibration_Command calibration(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : wrong_arguments;
    }
    try {
        if (calibration.chosen()) {
            return calibration.run();
        }
        return check.chosen() ? check.run() : make.run();
    } catch (const std::invalid_argument& error) {
        std::fprintf(stderr, "orbe-recording: %s\n", error.what());
        return wrong_arguments;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orbe-recording: %s\n", error.what());
        return failed;
    }
}
