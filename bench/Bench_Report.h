// Benchmarks: the figures that every benchmark reports, and a place for the library's own messages.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <iosfwd>

namespace Pelgar::ORBE::bench {

// Names the rate that the table is made of.
inline constexpr const char* stream_rate_counter = "stream_bytes_per_second";

// Reports stream bytes a second, over all iterations so far.
void report_stream_rate(benchmark::State& state, std::size_t stream_bytes_per_iteration);

// Sends standard output and standard error to nowhere, so that the library's messages neither mix with the
// report nor cost a terminal's time. The report goes to the stream that it returns, the former standard
// output.
std::ostream& silence_library();

} // namespace Pelgar::ORBE::bench
