// random_host --mode own|usb|pxi|both --seed N --calls N --threads N [--simulation]: a host that makes random
// calls of all exported functions, on the virtual box or on a recording. The same seed makes each thread make
// the same calls. Exit code 0 when all came back.
#include "Random_Host.h"

#include "Box_Clock.h"
#include "Host_Files.h"
#include "Temp_Directory.h"
#include "Virtual_Box_Controller.h"
#include "Waiter_Guard.h"

#include "generator/Calibration_Generator.h"
#include <adapter/Adapter_State.h>

#include <CLI/CLI.hpp>
#include <loguru.hpp>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;

// Of every probe of the virtual box.
constexpr std::uint64_t virtual_probe_serial_number = 0x1122334455667788;

// What the box's own way answers to a port or a channel that there is not.
constexpr std::string_view announced_exception = " : invalid array<T, N> subscript";

struct Options : Random_Host_Options {
    std::string mode = "own";
    bool simulation = false;
};

void prepare_files(const Options& options) {
    if (options.mode != "own") {
        select_host_mode(options.mode);
    }
    const recording::Calibration_Generator calibration(options.seed, virtual_probe_serial_number, "\n");
    std::ofstream("gain.csv") << calibration.gain_calibration();
    std::ofstream("adc.csv") << calibration.adc_calibration();
    auto recording = ramp_options();
    recording.super_frames = 6000;
    select_recording(recording);
    if (!options.simulation) {
        std::filesystem::remove("ORBE_DFGMZ_ADAPTER_SIM");
    }
}

int run(Options& options) {
    options.is_host_mode = options.mode != "own";
    std::fprintf(stderr, "random_host --mode %s --seed %llu --calls %zu --threads %zu%s\n",
                 options.mode.c_str(), static_cast<unsigned long long>(options.seed), options.calls,
                 options.threads, options.simulation ? " --simulation" : "");
    prepare_files(options);
    Random_Box box(options.is_host_mode);
    if (!options.simulation) {
        *npoe_adapter::g_controller_factory = [&box](bool) {
            return std::make_shared<ORBE_Controller_Library>(
                std::make_shared<Virtual_Box_Controller>(box.box()), false);
        };
    }
    const Box_Clock clock(box.box()->stream());
    const Waiter_Guard waiter;
    Random_Host host(options, box);
    // Standard error is for those who look at the process: the sanitizers, and stacks.
    if (std::freopen("library.txt", "w", stdout) == nullptr) {
        return EXIT_FAILURE;
    }
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    host.run();
    *npoe_adapter::g_controller_factory = {};
    bool is_as_announced = true;
    for (const auto& [text, times] : host.exceptions()) {
        std::fprintf(stderr, "%s (%llu times)\n", text.c_str(), static_cast<unsigned long long>(times));
        is_as_announced = is_as_announced && text.ends_with(announced_exception);
    }
    std::fprintf(stderr, "every call came back: %llu, of which %llu did what they were asked for\n",
                 static_cast<unsigned long long>(host.calls()),
                 static_cast<unsigned long long>(host.successes()));
    return is_as_announced ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Calls exported functions at random");
    app.add_option("--mode", options.mode)->check(CLI::IsMember({"own", "usb", "pxi", "both"}));
    app.add_option("--seed", options.seed);
    app.add_option("--calls", options.calls);
    app.add_option("--threads", options.threads)->check(CLI::Range(1, 16));
    app.add_flag("--simulation", options.simulation);
    CLI11_PARSE(app, argc, argv);
    const Temp_Directory directory;
    std::filesystem::current_path(directory.path());
    return run(options);
}
