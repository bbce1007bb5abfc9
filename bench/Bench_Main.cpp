// Program orbe-bench: prints, in one run, how fast memory is copied, how fast each stage of the data path is
// alone, and what the whole road does from the driver's reads to the host's packets. Compare figures of one
// run only. Exit codes: 0 done, 1 a benchmark failed or a report cannot be written, 2 wrong arguments.
#include "Descriptor_Buffer.h"
#include "Export_Speed.h"
#include "Host_Latency.h"
#include "Process_Counters.h"
#include "Rate_Table.h"
#include "Road_Report.h"
#include "command_line/Number_In.h"
#include "command_line/Program.h"
#include "library_run/Quiet_Library.h"
#include "library_run/Working_Directory.h"
#include "terminal/Exit_Codes.h"
#include "terminal/Standard_Output.h"

#include <benchmark/benchmark.h>

#include <loguru.hpp>

#include <filesystem>
#include <fstream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::bench;

#if defined(_WIN32)
constexpr const char* null_device = "NUL";
#else
constexpr const char* null_device = "/dev/null";
#endif

constexpr double longest_run = 3600.0;

constexpr const char* footer =
    "What begins with --benchmark_ goes to the library that measures the stages, for example "
    "--benchmark_filter=row_split.\n\n"
    "Exit codes: 0 done, 1 a benchmark failed or a report cannot be written, 2 wrong arguments.";

struct Choice {
    bool stages = false;
    bool road = false;
    bool growth = false;
    bool exports = false;
    double seconds = 4.0;
    int asked = 1;
    std::string json;
};

std::vector<Road_Result> run_full_box(const Choice& choice, std::ostream& report) {
    const Bench_Stream stream(full_box);
    std::vector<Road_Result> results;
    for (const Pace pace : {Pace::flat_out, Pace::loss_free, Pace::box}) {
        Road_Options options;
        options.pace = pace;
        options.seconds = choice.seconds;
        options.asked = choice.asked;
        results.push_back(run_road(stream, options));
        print_run(report, results.back());
    }
    return results;
}

std::vector<Road_Result> run_growth(const Choice& choice, std::ostream& report) {
    std::vector<Stream_Shape> shapes;
    for (const unsigned ports : {1U, 2U, 4U}) {
        for (const unsigned rhd_streams : {0U, 8U, 16U, 32U}) {
            shapes.push_back({ports, rhd_streams});
        }
    }
    shapes.push_back({0, 32});
    std::vector<Road_Result> results;
    for (const Stream_Shape shape : shapes) {
        const Bench_Stream stream(shape);
        for (const Pace pace : {Pace::flat_out, Pace::box}) {
            Road_Options options;
            options.pace = pace;
            options.seconds = choice.seconds / 2;
            options.asked = choice.asked;
            results.push_back(run_road(stream, options));
        }
    }
    print_growth(report, results);
    return results;
}

// Whether no benchmark failed.
bool measure(const Choice& choice, std::ostream& report) {
    Rate_Table table;
    std::vector<Road_Result> runs;
    std::vector<Export_Rate> exports;
    if (choice.stages) {
        table.SetOutputStream(&report);
        table.SetErrorStream(&report);
        benchmark::RunSpecifiedBenchmarks(&table);
    }
    if (choice.road) {
        runs = run_full_box(choice, report);
    }
    if (choice.road) {
        print_host_latency(report, measure_host_latency(Bench_Stream({4, 0}), choice.seconds));
    }
    if (choice.growth) {
        for (Road_Result& result : run_growth(choice, report)) {
            runs.push_back(std::move(result));
        }
    }
    if (choice.exports) {
        exports = measure_export(choice.seconds);
        print_export(report, exports);
    }
    if (!choice.json.empty()) {
        std::ofstream file(choice.json);
        {
            Json_Writer json(file);
            table.write(json);
            write_runs(json, runs);
            write_exports(json, exports);
        }
        if (!file.flush()) {
            throw std::runtime_error("cannot write " + choice.json);
        }
    }
    return table.all_done();
}

int run(Choice choice) {
    if (!choice.stages && !choice.road && !choice.growth && !choice.exports) {
        choice.stages = choice.road = choice.growth = true;
    }
    if (!choice.json.empty()) {
        choice.json = std::filesystem::absolute(choice.json).string();
    }
    leave_own_thread_out();
    // The library writes files into the working directory.
    const tools::Working_Directory directory("orbe-bench-");
    // Its messages would mix with the report, and cost a terminal's time.
    loguru::g_stderr_verbosity = loguru::Verbosity_ERROR;
    const tools::Quiet_Library quiet(null_device, null_device);
    Descriptor_Buffer buffer(quiet.user_output_descriptor());
    std::ostream report(&buffer);
    const bool all_done = measure(choice, report);
    if (!report) {
        tools::note_lost_output(buffer.error());
    }
    return all_done ? tools::exit_codes::done : tools::exit_codes::failed;
}

// Gives the library that measures its arguments, and answers the others: this program's own, and what neither
// knows.
std::vector<std::string> own_arguments(int argc, char** argv) {
    constexpr std::string_view library_option = "--benchmark_";
    constexpr std::string_view out_option = "--benchmark_out=";
    std::vector<std::string> own;
    std::vector<std::string> others;
    for (const std::string argument : std::vector<const char*>(argv + 1, argv + argc)) {
        if (argument.starts_with(out_option)) {
            // The same file, whatever the working directory is.
            const auto file = std::filesystem::absolute(argument.substr(out_option.size()));
            others.push_back(std::string(out_option) + file.string());
        } else {
            (argument.starts_with(library_option) ? others : own).push_back(argument);
        }
    }
    std::vector<char*> pointers{argv[0]};
    for (std::string& argument : others) {
        pointers.push_back(argument.data());
    }
    int count = static_cast<int>(pointers.size());
    pointers.push_back(nullptr);
    benchmark::Initialize(&count, pointers.data());
    own.insert(own.end(), pointers.begin() + 1, pointers.begin() + count);
    return own;
}

} // namespace

int main(int argc, char** argv) {
    tools::Program program(
        "orbe-bench",
        "How fast the data road of the ORBE library is; without a choice, the first three parts");
    Choice choice;
    CLI::App& app = program.app();
    app.add_flag("--stages", choice.stages, "Each stage alone, beside a copy of memory");
    app.add_flag("--road", choice.road, "The whole road with the full box's stream, in detail");
    app.add_flag("--growth", choice.growth, "The whole road over ports and RHD streams");
    app.add_flag(
        "--export", choice.exports,
        "Raw recordings to the formats of the lab's tools, beside a plain copy; takes 250 MB on the disk of "
        "the temporary files for each of --seconds");
    app.add_option("--seconds", choice.seconds,
                   "How long each run of the road is measured, and the recording that is exported")
        ->check(tools::real_in(0.1, longest_run))
        ->capture_default_str();
    app.add_option("--asked", choice.asked, "Packets that a host's reader asks for in a call")
        ->check(tools::whole_in(1, 500))
        ->capture_default_str();
    app.add_option("--json", choice.json, "Also writes all figures into this file");
    app.footer(footer);
    const std::vector<std::string> own = own_arguments(argc, argv);
    std::vector<const char*> pointers{argv[0]};
    for (const std::string& argument : own) {
        pointers.push_back(argument.c_str());
    }
    const int result =
        program.run(static_cast<int>(pointers.size()), pointers.data(), [&] { return run(choice); });
    benchmark::Shutdown();
    return result;
}
