// Layer: demultiplexer. What was wrong with one stream as it came from the box, each time it was found and
// told. A plain record.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::demux {

struct Stream_Damage {
    std::uint64_t row_gaps = 0;   // places where the row counter jumps
    std::uint64_t frame_gaps = 0; // places where the probe's frame counter jumps
    std::uint64_t wrong_tags = 0; // words

    bool operator==(const Stream_Damage&) const = default;
};

} // namespace Pelgar::ORBE::demux
