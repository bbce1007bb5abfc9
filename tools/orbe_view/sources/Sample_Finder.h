// Program orbe-view, sources. Finds where the streams stand at a place of a raw recording: follows the super
// frames of every port and the frames of the inputs by the decoder's own rules, so that both number them
// alike. One thread; nothing blocks.
#pragma once

#include "history/Health_History.h"
#include "host_streams/Sample_Count.h"
#include "probe/Super_Frame_Counter.h"
#include "stream_format/Wire_Format.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace Pelgar::ORBE::view {

class Sample_Finder {
public:
    struct Place {
        std::uint64_t number; // of the first sample that a decoder takes that begins with this piece
        std::uint64_t end;    // behind the last one
    };

    // Of the ports, and behind them of the ADC inputs. Nothing for a port without a super frame that is in
    // order here: whose flag and tags are right, and whose thirteen frame counters run on. What one damaged
    // counter says is not believed.
    using Places = std::array<std::optional<Place>, stream_count>;

    // Of each piece of a recording, in order: the probes' counters wrap every few seconds. Samples are
    // counted from the first one of each stream; one that counts from 0 again goes on where it was.
    Places find(std::span<const std::uint8_t> piece);

private:
    std::uint64_t follow_input(std::uint32_t stamp);

    std::array<demux::Super_Frame_Counter, recording::port_count> m_counters;
    std::uint64_t m_input_counter = 0; // the last stamp of the inputs, without its wraps
    std::array<npoe_adapter::Sample_Count, stream_count> m_samples;
};

} // namespace Pelgar::ORBE::view
