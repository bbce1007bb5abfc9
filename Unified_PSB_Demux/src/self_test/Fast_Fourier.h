// Layer: demultiplexer, self tests. A small Fourier transform and what the signal test reads from a spectrum.
// Called on the threads that run self tests; nothing is shared between calls.
#pragma once

#include "common/Export.h"

#include <complex>
#include <ostream>

namespace Pelgar::ORBE {

// Replaces n samples by their n bins, X[k] = sum over j of x[j] * exp(i * 2 * pi * j * k / n), not scaled.
// n is a power of two; 1 and less leave the data as they are. Allocates n / 2 values.
ORBE_EXPORT void fast_fourier(std::complex<double>* data, double n);

// The bin of the largest amplitude among the bins 1 to n / 2 - 1 of a spectrum, the first one of equals; the
// amplitude 2 * |X[k]| / n, that of a sine, goes to `magnitude` unless it is null. Bin and amplitude 0 where
// there are no such bins.
ORBE_EXPORT unsigned int peek_search(const std::complex<double>* data, unsigned int n, double* magnitude);

// Writes the amplitudes of the bins 0 to n / 2 - 1, one line "bin amplitude" each.
ORBE_EXPORT void print_magnitudes(std::ostream& stream, const std::complex<double>* data, unsigned int n);

// Reads n numbers, separated by white space, from a text file into the real parts. False, with a message on
// standard error, when the file cannot be opened or holds fewer; what was read until then stays.
ORBE_EXPORT bool load_sample_data_from_file(std::complex<double>* data, unsigned int n, const char* path);

} // namespace Pelgar::ORBE
