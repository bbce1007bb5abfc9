#include "Bench_Report.h"

namespace Pelgar::ORBE::bench {

void report_stream_rate(benchmark::State& state, std::size_t stream_bytes_per_iteration) {
    const double bytes =
        static_cast<double>(stream_bytes_per_iteration) * static_cast<double>(state.iterations());
    state.counters[stream_rate_counter] = benchmark::Counter(bytes, benchmark::Counter::kIsRate);
}

} // namespace Pelgar::ORBE::bench
