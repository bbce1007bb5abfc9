// Layer: façade. The line that now and then tells on standard output that packets reach the host. Called on the
// host's reader threads; never blocks.
#pragma once

namespace Pelgar::ORBE::npoe_adapter {

// Counts one completed read of `packet_count` packets from the port index (0..3); every 256th read of a port
// looks at the clock, and prints when at least a second has gone by since any port last did.
void report_throughput(int port_index, int packet_count);

} // namespace Pelgar::ORBE::npoe_adapter
