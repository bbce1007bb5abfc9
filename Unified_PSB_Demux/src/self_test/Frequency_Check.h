// Layer: demultiplexer, self tests. Judges by its frequency whether a probe's test signal is seen on every
// channel. Called on the threads that run self tests; takes as long as 384 transforms.
#pragma once

#include "common/Export.h"

#include <cstddef>

namespace Pelgar::ORBE {

class L2_Sample_Accumulator;

// Transforms the first n AP samples (n a power of two) of each channel and prints the frequency and the
// amplitude of its strongest tone. True when that lies within 1150 to 1300 Hz on all 384 channels, at an AP
// sample every 33 us. False also when there are fewer than n records, or n is 0.
ORBE_EXPORT bool check_frequencies(const L2_Sample_Accumulator& samples, std::size_t n);

} // namespace Pelgar::ORBE
