// Tools, recording library. Everything that says what a generated recording looks like. The same options give
// the same bytes, everywhere.
#pragma once

#include "faults/Fault.h"
#include "signals/Signal_Choice.h"

#include <cstdint>
#include <vector>

namespace Pelgar::ORBE::recording {

// The frequency in the middle of bin `bin` of a spectrum over 1024 AP samples.
constexpr double frequency_of_bin(double bin) {
    return bin * 30000.0 / 1024.0;
}

struct Recording_Options {
    // How long: this many super frames of every port (30,000 are a second) and as many RHD frames ...
    std::uint64_t super_frames = 0;
    // ... or, when not 0, just long enough that a host gets the packets of so many whole blocks of 1,792
    // super frames of every port, and a whole number of 1 MiB pieces.
    std::uint64_t blocks = 0;

    std::vector<unsigned> ports = {1, 2, 3, 4}; // 1..4, ascending, each at most once; may be empty
    bool rhd = true;
    unsigned rhd_streams = 0; // 0..32

    std::uint64_t seed = 1;
    std::vector<Signal_Choice> signals;           // none: noise everywhere
    double tone_frequency = frequency_of_bin(40); // Hz, in the AP band

    std::vector<Fault> faults;
    std::uint64_t extra_bytes = 0; // zero bytes after the last row
};

} // namespace Pelgar::ORBE::recording
