// Test support, virtual box. What can be wrong with one read of the DMA stream. A plain record.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::test {

struct DMA_Read_Fault {
    enum class Kind : std::uint8_t {
        short_read, // ends after `bytes` bytes; the stream goes on with the next read
        fails,      // throws std::runtime_error("c2h transfer failed"); no data is lost
        fails_late, // the same when it would end; what it has read is lost
        stalls,     // does not end before `release_stalled_read`, whatever becomes of the sources
        over_long   // says that it has read `bytes` bytes more than the buffer takes
    };

    Kind kind = Kind::fails;
    std::uint32_t bytes = 0; // 0: an empty read
};

} // namespace Pelgar::ORBE::test
