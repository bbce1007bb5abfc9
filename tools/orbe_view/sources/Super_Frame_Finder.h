// Program orbe-view, sources. Finds where the probes stand at a place of a raw recording: the number of each
// port's first whole super frame from there on. One thread; nothing blocks.
#pragma once

#include "probe/Super_Frame_Counter.h"
#include "stream_format/Wire_Format.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace Pelgar::ORBE::view {

class Super_Frame_Finder {
public:
    struct Place {
        std::uint64_t number;   // super frames before this one since the recording's first one
        bool begins_with_piece; // nothing of the port is before it in the piece
    };

    // Nothing for a port without a super frame here.
    using Places = std::array<std::optional<Place>, recording::port_count>;

    // Of each piece of a recording, in order: the probes' counters wrap every few seconds.
    Places find(std::span<const std::uint8_t> piece);

private:
    std::array<demux::Super_Frame_Counter, recording::port_count> m_counters;
    std::array<std::optional<std::uint64_t>, recording::port_count> m_first;
};

} // namespace Pelgar::ORBE::view
