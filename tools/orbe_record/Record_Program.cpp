#include "Record_Program.h"

#include "Record_Command.h"
#include "command_line/Program.h"
#include "repair/Repair.h"
#include "terminal/Exit_Codes.h"

#include <cstdio>
#include <string>

namespace Pelgar::ORBE::recorder {

namespace {

constexpr const char* footer =
    "The box's probes are brought up and configured, and the streams of all of them and of the ADC inputs "
    "are "
    "written with one clock. While it records, a line a stream tells how much is written, at which rate, how "
    "full the library's queue is, how many samples are lost, and what the disk still holds: drawn anew on a "
    "terminal, written out every 5 s elsewhere. Disks that stall for up to 6 s lose nothing.\n\n"
    "Examples:\n"
    "  orbe-record monday --seconds 600 --calibration ~/calibration\n"
    "  orbe-record tuesday --format open-ephys --electrodes map.csv --calibration ~/calibration\n"
    "  orbe-record test --simulation ten-seconds.bin --seconds 5\n"
    "  orbe-record repair monday\n\n"
    "Exit codes: 0 everything is recorded and nothing is lost, also when stopped by Ctrl-C; 1 nothing is "
    "recorded; 2 "
    "wrong arguments; 3 something is lost, which the file of gaps in the folder tells; 4 the disk did not "
    "take it all, "
    "what it took stays.";

constexpr const char* repair_footer = "Exit codes: 0 the recording is whole, or has been made so; 1 the "
                                      "folder holds no recording or cannot be changed; 2 "
                                      "wrong arguments.";

int repair(const std::string& folder) {
    const auto changes = repair_recording(folder);
    for (const std::string& change : changes) {
        std::puts(change.c_str());
    }
    std::printf("%s is whole%s.\n", folder.c_str(), changes.empty() ? ", and was" : " now");
    return tools::exit_codes::done;
}

} // namespace

int run_record_program(int argc, const char* const* argv) {
    tools::Program program("orbe-record", "Records from the ORBE acquisition box into a folder");
    CLI::App& app = program.app();
    const Record_Command record(app);
    std::string folder;
    CLI::App* const repair_command = app.add_subcommand(
        "repair", "Make a recording whole that was killed, or whose disk ran full, so that readers open it");
    repair_command->add_option("FOLDER", folder, "The recorded folder")->required();
    repair_command->footer(repair_footer);
    app.footer(footer);
    return program.run(argc, argv, [&] { return repair_command->parsed() ? repair(folder) : record.run(); });
}

} // namespace Pelgar::ORBE::recorder
