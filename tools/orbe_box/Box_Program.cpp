#include "Box_Program.h"

#include "Exit_Codes.h"
#include "Flash_Command.h"
#include "Hardware_Info_Command.h"
#include "Info_Command.h"
#include "Interrupt.h"
#include "Library_Run.h"
#include "Self_Test_Command.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::tools {

int run_box_program(int argc, const char* const* argv, const Box_Environment& environment) {
    CLI::App app("The ORBE acquisition box on the bench");
    bool simulation = false;
    bool keep = false;
    std::string recordings;
    app.add_flag("--simulation", simulation, "Work on the simulated box");
    app.add_option("--recordings", recordings,
                   "Where the simulated box finds the recordings of its self tests")
        ->check(CLI::ExistingDirectory);
    app.add_flag("--keep", keep, "Keep the library's log and what it printed also when all went well");
    app.require_subcommand(1);
    const Info_Command info(app);
    const Self_Test_Command self_test(app);
    Flash_Command flash(app);
    Hardware_Info_Command hardware_info(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exit_codes::done : exit_codes::wrong_arguments;
    }
    try {
        if (flash.chosen()) {
            flash.check_arguments();
        } else if (hardware_info.chosen()) {
            hardware_info.check_arguments();
        }
        if (!recordings.empty()) {
            // The library runs in a directory of its own.
            recordings = std::filesystem::absolute(recordings).string();
        }
        Library_Run run;
        int result = exit_codes::failed;
        try {
            const Bench bench{environment, run, simulation, recordings};
            if (info.chosen()) {
                result = info.run(bench);
            } else if (self_test.chosen()) {
                result = self_test.run(bench);
            } else if (flash.chosen()) {
                result = flash.run(bench);
            } else {
                result = hardware_info.run(bench);
            }
        } catch (const std::exception& error) {
            std::fprintf(stderr, "orbe-box: %s\n", error.what());
        }
        if (keep || result != exit_codes::done) {
            run.keep();
            std::fprintf(stderr, "orbe-box: the library's log and what it printed are in '%s'\n",
                         run.path().string().c_str());
        }
        return result;
    } catch (const std::invalid_argument& error) {
        std::fprintf(stderr, "orbe-box: %s\n", error.what());
        return exit_codes::wrong_arguments;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orbe-box: %s\n", error.what());
        return exit_codes::failed;
    }
}

} // namespace Pelgar::ORBE::tools
