// Layer: device controller. Plays a recording as fast as the box made it, by the samples that it holds.
// Called on the pump thread; waits.
#pragma once

#include "wire/Mux_Row_Format.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

namespace Pelgar::ORBE {

class Recording_Pace {
public:
    using Clock = std::chrono::steady_clock;

    // Waits until the box would have sent the last row of the piece, which is made of whole rows. Time begins
    // with the first piece. Recordings that do not keep up are not hurried afterwards: time goes on from
    // where they are.
    void wait_until_due(std::span<const std::uint8_t> piece);

private:
    void count_samples(std::span<const std::uint8_t> piece);

    std::optional<Clock::time_point> m_start;
    // Super frames of each probe port.
    std::array<std::uint64_t, demux::np_port_count> m_samples{};
    std::uint64_t m_rhd_words = 0;
};

} // namespace Pelgar::ORBE
