// Endurance test. How far a stream may run ahead of its readers, and how long an opening may last. No state.
#pragma once

#include "Packet_Layout.h"
#include "Stream_Pace.h"

#include <cstdint>

namespace Pelgar::ORBE::test {

// After 3 h 3 min 33 s the box's own mode takes the band and slot of a probe's frames anew (its frame number
// of 32 bits wraps), until the probe is opened again: an opening ends before.
inline constexpr std::uint64_t longest_own_opening = std::uint64_t{3} * 3600 * 30'000;

// The box's own queues hold 501 packets each, one of the ADC inputs a tick. Those of the host mode hold far
// more than is needed to keep every thread busy.
inline Stream_Pace::Windows windows_of(Packet_Layout layout) {
    constexpr std::uint64_t of_port = 500 * 12;
    return layout == Packet_Layout::own ? Stream_Pace::Windows{of_port, 500}
                                        : Stream_Pace::Windows{of_port, of_port};
}

} // namespace Pelgar::ORBE::test
