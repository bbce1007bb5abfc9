// Layer: device controller, self tests. Whether every channel sees the probe's test signal. Called on the
// host's threads; blocks for five spans of 1,024 AP samples at most, and the spectra of 384 channels each.
#pragma once

#include <string>

namespace Pelgar::ORBE {

class Box_Connection;
class Box_Stream;
class Probe_Bring_Up;

// Brings the probe of a port (index 0..3) up with the test signal in its pixels and checks the frequency on
// all channels, up to five times, each time with 1,024 new AP sample sets. Fails when the stream ends, or
// brings no AP data, before there are so many. In simulation mode the data come from
// "muxed_np_raw_data_2_minute.bin" in `directory`, unless a stream has been prepared before. Must not run
// while another thread pumps. The listeners are put back and the streams off afterwards; but with the error
// level raised, as by a failing read, no register is written any more and the box goes on sending. Every
// std::exception is printed and fails the test.
bool run_signal_test(const Box_Connection& box, Probe_Bring_Up& bring_up, Box_Stream& box_stream,
                     unsigned port, const std::string& directory);

} // namespace Pelgar::ORBE
