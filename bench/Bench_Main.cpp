// Prints, in one run, how fast memory is copied, how fast each stage of the data path is alone, and how fast
// the whole road is from the pump's push to the host's packets. Compare figures of one run only.
#include "Bench_Report.h"
#include "Rate_Table.h"

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    Pelgar::ORBE::bench::Rate_Table reporter;
    std::ostream& report = Pelgar::ORBE::bench::silence_library();
    reporter.SetOutputStream(&report);
    reporter.SetErrorStream(&report);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
