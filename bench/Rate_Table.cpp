#include "Rate_Table.h"

#include "Bench_Data.h"
#include "Bench_Report.h"

#include <iomanip>

namespace Pelgar::ORBE::bench {

bool Rate_Table::ReportContext(const Context& /*context*/) {
    GetOutputStream() << std::left << std::setw(28) << "stage" << std::right << std::setw(10) << "GB/s"
                      << std::setw(14) << "x full box" << std::setw(12) << "x memcpy"
                      << "\n";
    return true;
}

void Rate_Table::ReportRuns(const std::vector<Run>& runs) {
    auto& out = GetOutputStream();
    for (const Run& run : runs) {
        if (run.error_occurred) {
            out << run.benchmark_name() << ": " << run.error_message << "\n";
            continue;
        }
        const double rate = run.counters.at(stream_rate_counter).value;
        if (m_first_rate == 0.0) {
            m_first_rate = rate;
        }
        out << std::left << std::setw(28) << run.run_name.function_name << std::right << std::fixed
            << std::setprecision(2) << std::setw(10) << rate / 1e9 << std::setprecision(1) << std::setw(14)
            << rate / full_box_bytes_per_second << std::setprecision(3) << std::setw(12)
            << rate / m_first_rate;
        for (const auto& [name, counter] : run.counters) {
            if (name != stream_rate_counter) {
                out << std::setprecision(0) << "   " << name << " " << counter.value;
            }
        }
        out << "\n" << std::flush;
    }
}

} // namespace Pelgar::ORBE::bench
