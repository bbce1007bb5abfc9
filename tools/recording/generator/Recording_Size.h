// Tools, recording library. How much a generated recording holds when no fault strikes. Any thread; never
// blocks.
#pragma once

#include "generator/Recording_Options.h"
#include "stream_format/Wire_Format.h"

#include <array>
#include <cstdint>

namespace Pelgar::ORBE::recording {

struct Stream_Size {
    std::uint64_t rows = 0;
    std::uint64_t super_frames = 0; // begun, of a port
    std::uint64_t rhd_frames = 0;   // begun, of the RHD stream
};

struct Recording_Size {
    std::uint64_t bytes = 0;
    std::array<Stream_Size, rhd_stream + 1> streams; // by stream id
};

// The options must be good.
Recording_Size size_of(const Recording_Options& options);

} // namespace Pelgar::ORBE::recording
