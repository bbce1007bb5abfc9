// Program orbe-bench: prints, in one run, how fast memory is copied, how fast each stage of the data path is
// alone, and what the whole road does from the driver's reads to the host's packets. Compare figures of one
// run only.
#include "Bench_Report.h"
#include "Rate_Table.h"
#include "Road_Report.h"

#include "Working_Directory.h"

#include <benchmark/benchmark.h>

#include <CLI/CLI.hpp>

#include <exception>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::bench;

struct Choice {
    bool stages = false;
    bool road = false;
    bool growth = false;
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

void measure(const Choice& choice, std::ostream& report) {
    Rate_Table table;
    std::vector<Road_Result> runs;
    if (choice.stages) {
        table.SetOutputStream(&report);
        table.SetErrorStream(&report);
        benchmark::RunSpecifiedBenchmarks(&table);
    }
    if (choice.road) {
        runs = run_full_box(choice, report);
    }
    if (choice.growth) {
        for (Road_Result& result : run_growth(choice, report)) {
            runs.push_back(std::move(result));
        }
    }
    if (!choice.json.empty()) {
        std::ofstream file(choice.json);
        {
            Json_Writer json(file);
            table.write(json);
            write_runs(json, runs);
        }
        if (!file.flush()) {
            throw std::runtime_error("cannot write " + choice.json);
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    constexpr int failed = 1;
    constexpr int wrong_arguments = 2;

    benchmark::Initialize(&argc, argv); // takes its own arguments away
    Choice choice;
    CLI::App app("How fast the data road of the ORBE library is; without a choice, all three parts");
    app.add_flag("--stages", choice.stages, "Each stage alone, beside a copy of memory");
    app.add_flag("--road", choice.road, "The whole road with the full box's stream, in detail");
    app.add_flag("--growth", choice.growth, "The whole road over ports and RHD streams");
    app.add_option("--seconds", choice.seconds, "How long each run of the road is measured");
    app.add_option("--asked", choice.asked, "Packets that a host's reader asks for in a call")
        ->check(CLI::Range(1, 500));
    app.add_option("--json", choice.json, "Also writes all figures into this file");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : wrong_arguments;
    }
    if (!choice.stages && !choice.road && !choice.growth) {
        choice.stages = choice.road = choice.growth = true;
    }
    if (!choice.json.empty()) {
        choice.json = std::filesystem::absolute(choice.json).string();
    }

    std::ostream& report = silence_library();
    try {
        // openBS writes files into the working directory.
        const tools::Working_Directory directory("orbe-bench-");
        measure(choice, report);
    } catch (const std::exception& error) {
        report << "orbe-bench: " << error.what() << "\n" << std::flush;
        return failed;
    }
    benchmark::Shutdown();
    return 0;
}
