#include "Rate_Table.h"

#include "Bench_Report.h"
#include "Bench_Stream.h"

#include <iomanip>

namespace Pelgar::ORBE::bench {

namespace {

constexpr double row_bytes = 16;

double nanoseconds_per_row(double bytes_per_second) {
    return row_bytes / bytes_per_second * 1e9;
}

} // namespace

bool Rate_Table::ReportContext(const Context& /*context*/) {
    GetOutputStream() << std::left << std::setw(28) << "stage" << std::right << std::setw(10) << "GB/s"
                      << std::setw(10) << "ns a row" << std::setw(14) << "x full box" << std::setw(12)
                      << "x memcpy"
                      << "\n";
    return true;
}

void Rate_Table::ReportRuns(const std::vector<Run>& runs) {
    auto& out = GetOutputStream();
    for (const Run& run : runs) {
        if (run.error_occurred) {
            m_all_done = false;
            out << run.benchmark_name() << ": " << run.error_message << "\n";
            continue;
        }
        const double rate = run.counters.at(stream_rate_counter).value;
        m_rates.push_back({run.run_name.function_name, rate});
        out << std::left << std::setw(28) << run.run_name.function_name << std::right << std::fixed
            << std::setprecision(2) << std::setw(10) << rate / 1e9 << std::setw(10)
            << nanoseconds_per_row(rate) << std::setprecision(1) << std::setw(14)
            << rate / full_box_bytes_per_second << std::setprecision(3) << std::setw(12)
            << rate / m_rates.front().bytes_per_second << "\n"
            << std::flush;
    }
}

void Rate_Table::write(Json_Writer& json) const {
    json.begin_list("stages");
    for (const Rate& rate : m_rates) {
        json.begin_object();
        json.text("name", rate.name);
        json.number("bytes_per_second", rate.bytes_per_second);
        json.number("ns_per_row", nanoseconds_per_row(rate.bytes_per_second));
        json.number("x_full_box", rate.bytes_per_second / full_box_bytes_per_second);
        json.number("x_memcpy", rate.bytes_per_second / m_rates.front().bytes_per_second);
        json.end_object();
    }
    json.end_list();
}

} // namespace Pelgar::ORBE::bench
