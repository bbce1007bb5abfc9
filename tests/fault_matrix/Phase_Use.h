// Test support, fault matrix. What a host's visit without a fault uses in each of its phases, as the box
// saw it. A plain record.
#pragma once

#include "Phase.h"

#include <cstddef>
#include <cstdint>
#include <map>

namespace Pelgar::ORBE::test {

// What a fault needs in a phase in order to show.
enum class Part : std::uint8_t {
    link,        // bytes on a probe's link
    ids,         // the ids of the link's two ends
    locks,       // the link, or a look at its lock, or rows
    driver,      // an opening of the driver
    next_read,   // a read of the stream that begins
    read,        // a read of the stream that begins or is under way
    calibration, // a calibration file that is read
    capture,     // a file that the stream is captured into
    disk         // whatever is written, the log above all
};

struct Phase_Use {
    std::size_t link_frames = 0; // of the port whose probe is brought up
    std::size_t id_reads = 0;
    std::size_t lock_looks = 0;
    std::size_t driver_openings = 0;
    bool begins_reads = false;
    bool has_read_under_way = false;

    // Whether a fault of this part can show. Files are the library's affair: calibration is read where a host
    // configures, a capture's file is made at a start and written until the stop.
    bool shows(Part part, Phase phase) const {
        const bool reads = begins_reads || has_read_under_way;
        switch (part) {
        case Part::link:
            return link_frames > 0;
        case Part::ids:
            return id_reads > 0;
        case Part::locks:
            return lock_looks > 0 || link_frames > 0 || reads;
        case Part::driver:
            return driver_openings > 0;
        case Part::next_read:
            return begins_reads;
        case Part::read:
            return reads;
        case Part::calibration:
            return phase == Phase::configure;
        case Part::capture:
            return phase == Phase::start || phase == Phase::stream;
        case Part::disk:
            return true;
        }
        return false;
    }
};

using Visit_Use = std::map<Phase, Phase_Use>;

} // namespace Pelgar::ORBE::test
