// Benchmarks: prints one line a benchmark: stream bytes a second, nanoseconds a row of 16 bytes, multiples of
// the full box, and the share of this run's memory copy, so that figures of different machines and hours can
// be compared.
#pragma once

#include "Json_Writer.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace Pelgar::ORBE::bench {

class Rate_Table : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    // Whether no benchmark has failed.
    bool all_done() const { return m_all_done; }

    // A list of objects, one for each line so far.
    void write(Json_Writer& json) const;

private:
    struct Rate {
        std::string name;
        double bytes_per_second;
    };

    bool m_all_done = true;
    std::vector<Rate> m_rates; // the first is that of the memory copy
};

} // namespace Pelgar::ORBE::bench
