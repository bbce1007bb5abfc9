// Layer: façade. The line that now and then tells on standard output that packets reach the host. Called on
// the host's reader threads; never blocks.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::npoe_adapter {

// Counts one completed read of `packet_count` packets from the port index (0..3) at the steady-clock time
// `now_ns`. Every 256th read of a port compares it with the time of the last such read of any port, and
// prints when at least a second lies between.
void report_throughput(unsigned port_index, int packet_count, std::int64_t now_ns);

} // namespace Pelgar::ORBE::npoe_adapter
