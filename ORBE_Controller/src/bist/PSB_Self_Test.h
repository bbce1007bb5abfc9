// Layer: device controller, self tests. Whether the probe's test pattern arrives unharmed on all channels.
// Called on the host's threads; blocks for about a hundred buffers of data.
#pragma once

#include <string>

namespace Pelgar::ORBE {

class Box_Connection;
class Box_Stream;
class Probe_Bring_Up;

// Brings the probe of a port (index 0..3) up to send its test pattern, pumps at most 100 buffers of it
// through the data path and compares every AP sample set. Passes with at least 11 that agree and fewer than
// 10 that do not; both counts are printed. In simulation mode the data come from
// "muxed_raw_data_psb_test.bin" in `directory`, unless a stream has been prepared before. Must not run while
// another thread pumps. The listeners are put back and the streams off afterwards, also when an exception of
// the streaming operations passes through; but with the error level raised, as by a failing read, no register
// is written any more and the box goes on sending.
bool run_psb_test(const Box_Connection& box, Probe_Bring_Up& bring_up, Box_Stream& box_stream, unsigned port,
                  const std::string& directory);

} // namespace Pelgar::ORBE
