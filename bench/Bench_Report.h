// Benchmarks: the figure that every benchmark reports.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>

namespace Pelgar::ORBE::bench {

// Names the rate that the table is made of.
inline constexpr const char* stream_rate_counter = "stream_bytes_per_second";

// Reports stream bytes a second, over all iterations so far.
void report_stream_rate(benchmark::State& state, std::size_t stream_bytes_per_iteration);

} // namespace Pelgar::ORBE::bench
