// Program orbe-view, sources. Finds where the probes stand at a place of a raw recording: follows the super
// frames of every port by the decoder's own rules, so that both number them alike. One thread; nothing
// blocks.
#pragma once

#include "host_streams/Sample_Count.h"
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
        std::uint64_t number; // of the first super frame that a decoder takes that begins with this piece
        std::uint64_t end;    // behind the last one
    };

    // Nothing for a port without a super frame that is in order here: whose flag and tags are right, and
    // whose thirteen frame counters run on. What one damaged counter says is not believed.
    using Places = std::array<std::optional<Place>, recording::port_count>;

    // Of each piece of a recording, in order: the probes' counters wrap every few seconds. Samples are
    // counted from the first one of each port; a probe that counts from 0 again goes on where it was.
    Places find(std::span<const std::uint8_t> piece);

private:
    std::array<demux::Super_Frame_Counter, recording::port_count> m_counters;
    std::array<npoe_adapter::Sample_Count, recording::port_count> m_samples;
};

} // namespace Pelgar::ORBE::view
