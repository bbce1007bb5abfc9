#include "Box_Program.h"

#include "Flash_Command.h"
#include "Hardware_Info_Command.h"
#include "Info_Command.h"
#include "Library_Run.h"
#include "Self_Test_Command.h"
#include "command_line/Program.h"
#include "terminal/Exit_Codes.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

namespace Pelgar::ORBE::tools {

namespace {

constexpr const char* footer = "Exit codes: 0 done, 1 failed, 2 wrong arguments. The library's log, and what "
                               "it printed, are kept and named when "
                               "something failed.";

} // namespace

int run_box_program(int argc, const char* const* argv, const Box_Environment& environment) {
    Program program("orbe-box", "The ORBE acquisition box on the bench");
    CLI::App& app = program.app();
    bool simulation = false;
    bool keep = false;
    std::string recordings;
    app.add_flag("--simulation", simulation, "Work on the simulated box");
    app.add_option("--recordings", recordings,
                   "Where the simulated box finds the recordings of its self tests")
        ->check(CLI::ExistingDirectory);
    app.add_flag("--keep", keep, "Keep the library's log and what it printed also when all went well");
    app.footer(footer);
    app.require_subcommand(1);
    const Info_Command info(app);
    const Self_Test_Command self_test(app);
    Flash_Command flash(app);
    Hardware_Info_Command hardware_info(app);
    const auto command = [&](const Bench& bench) {
        if (info.chosen()) {
            return info.run(bench);
        }
        if (self_test.chosen()) {
            return self_test.run(bench);
        }
        return flash.chosen() ? flash.run(bench) : hardware_info.run(bench);
    };
    return program.run(argc, argv, [&] {
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
            result = command(Bench{environment, run, simulation, recordings});
        } catch (const std::exception& error) {
            std::fprintf(stderr, "orbe-box: %s\n", error.what());
        }
        if (keep || result != exit_codes::done) {
            run.keep();
            std::fprintf(stderr, "orbe-box: the library's log and what it printed are in '%s'\n",
                         run.path().string().c_str());
        }
        return result;
    });
}

} // namespace Pelgar::ORBE::tools
