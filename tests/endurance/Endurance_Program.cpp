// endurance --mode own-box|host-box|own-simulation|host-simulation [--hours H | --seconds S]: the exported
// functions for hours of box time, as fast as the machine goes, with every sample compared and the process
// watched. Exit code 0 when all was well.
#include "Box_Stage.h"
#include "Endurance_Run.h"
#include "Pipe_Stage.h"
#include "Recording_Stage.h"

#include "Temp_Directory.h"

#include <CLI/CLI.hpp>
#include <loguru.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>

#include <unistd.h>

namespace {

using namespace Pelgar::ORBE::test;

constexpr double ticks_per_second = 30'000.0;
constexpr const char* printed = "printed.txt";

struct Options {
    std::string mode = "own-box";
    double seconds = 0.0;
    double hours = 24.0;
    unsigned ports = 0;
    std::uint64_t start_at = 0;
    std::optional<std::uint64_t> fault_at;
    double opening_seconds = 0.0;
    unsigned wall_seconds = 0;
    std::uint64_t seed = 1;
};

std::unique_ptr<A_Stage> make_stage(const std::string& mode, const Stage_Options& options,
                                    std::uint64_t recording_ticks, Quick_Clock& clock) {
    if (mode == "own-box") {
        return std::make_unique<Box_Stage>(Packet_Layout::own, options);
    }
    if (mode == "host-box") {
        return std::make_unique<Box_Stage>(Packet_Layout::host, options);
    }
    if (mode == "own-simulation") {
        return std::make_unique<Pipe_Stage>(options, clock);
    }
    return std::make_unique<Recording_Stage>(options, recording_ticks, clock);
}

// What the library prints goes into a file, reports go where standard output led before.
std::FILE* lead_output_into_file() {
    std::FILE* const report = fdopen(dup(STDOUT_FILENO), "w");
    return std::freopen(printed, "w", stdout) == nullptr ? nullptr : report;
}

int run(const Options& options) {
    const bool own = options.mode.starts_with("own");
    const double seconds = options.seconds > 0.0 ? options.seconds : options.hours * 3600.0;
    Run_Options run;
    run.mode = options.mode;
    run.ticks = static_cast<std::uint64_t>(std::llround(seconds * ticks_per_second));
    run.wall_time = std::chrono::seconds(options.wall_seconds);
    constexpr double recording_seconds = 10.0;
    const double opening_seconds =
        options.opening_seconds > 0.0 ? options.opening_seconds : recording_seconds;
    const auto opening_ticks = static_cast<std::uint64_t>(std::llround(opening_seconds * ticks_per_second));
    if (options.opening_seconds > 0.0) {
        run.longest_opening = opening_ticks;
    }
    // Short runs have to give enough values, too.
    if (seconds < 600.0) {
        run.look_every = std::chrono::milliseconds(1);
    }
    // Of fewer than two ports the box's own mode moves more ADC frames at once than its queue holds.
    run.ports = options.ports != 0 ? options.ports : own ? 2 : 1;
    const unsigned fewest = own ? 2 : 1;
    const unsigned most = own ? 4 : 2;
    if (run.ports < fewest || run.ports > most || (own && options.start_at != 0)) {
        std::fprintf(stderr, "endurance: %s has %u to %u ports, and only the host mode starts elsewhere\n",
                     options.mode.c_str(), fewest, most);
        return EXIT_FAILURE;
    }
    Stage_Options stage_options;
    stage_options.ports = run.ports;
    stage_options.rows.seed = options.seed;
    stage_options.rows.fault_at = options.fault_at;
    constexpr std::uint64_t lfp_sample = 12;
    stage_options.rows.numbers = Sample_Numbers(options.start_at / lfp_sample * lfp_sample);

    std::FILE* const report = lead_output_into_file();
    if (report == nullptr) {
        return EXIT_FAILURE;
    }
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    Quick_Clock clock;
    const auto stage = make_stage(options.mode, stage_options, opening_ticks, clock);
    const auto faults = Endurance_Run(run, *stage, report, printed).run();
    for (const std::string& fault : faults) {
        std::fprintf(report, "%s : WRONG: %s\n", options.mode.c_str(), fault.c_str());
    }
    std::fprintf(report, "%s : %s\n", options.mode.c_str(),
                 faults.empty() ? "every sample was as it was put in" : "FAILED");
    return std::fclose(report) == 0 && faults.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Runs the exported functions for hours of box time and compares every sample");
    app.add_option("--mode", options.mode)
        ->check(CLI::IsMember({"own-box", "host-box", "own-simulation", "host-simulation"}));
    app.add_option("--hours", options.hours, "Box time")->check(CLI::PositiveNumber);
    app.add_option("--seconds", options.seconds, "Box time, instead of --hours")->check(CLI::PositiveNumber);
    app.add_option("--ports", options.ports, "Own mode: 2 to 4, default 2; host mode: 1 or 2, default 1");
    app.add_option("--start-at", options.start_at, "Host mode: the sample that the stream leaps to");
    app.add_option("--fault-at", options.fault_at, "The super frame in which one bit is sent wrong");
    app.add_option("--opening-seconds", options.opening_seconds,
                   "Closes and opens so often; host-simulation: length of the recording, default 10")
        ->check(CLI::Range(1.0, 600.0));
    app.add_option("--wall-seconds", options.wall_seconds, "Ends the run after so long");
    app.add_option("--seed", options.seed);
    CLI11_PARSE(app, argc, argv);
    try {
        const Temp_Directory directory;
        std::filesystem::current_path(directory.path());
        return run(options);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "endurance: %s\n", exception.what());
        return EXIT_FAILURE;
    }
}
