// Benchmarks: how old a sample is when a host that polls has it, in host mode, at the box's pace. Compare it
// with the latencies of the whole road in the same run, which are those of the box's own mode.
#pragma once

#include "Bench_Stream.h"
#include "Road_Run.h"

#include <iosfwd>

namespace Pelgar::ORBE::bench {

// From the push of the transfer that brings a packet's last sample to the poll that finds the packet. A
// thread a port polls once a millisecond.
Latency measure_host_latency(const Bench_Stream& stream, double seconds);

void print_host_latency(std::ostream& out, const Latency& latency);

} // namespace Pelgar::ORBE::bench
