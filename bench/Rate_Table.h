// Benchmarks: prints one line a benchmark: stream bytes a second, multiples of the full box, and the share of
// this run's memory copy, so that figures of different machines and hours can be compared.
#pragma once

#include <benchmark/benchmark.h>

namespace Pelgar::ORBE::bench {

class Rate_Table : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

private:
    double m_first_rate = 0.0; // that of the memory copy, which runs first
};

} // namespace Pelgar::ORBE::bench
