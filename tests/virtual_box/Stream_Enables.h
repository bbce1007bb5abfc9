// Test support, virtual box. Which data sources of the box are on, and what the probes send. A plain record.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Pelgar::ORBE::test {

inline constexpr std::size_t box_port_count = 4;

// What a probe sends, by its mode registers.
enum class Probe_Output : std::uint8_t { recording, test_pattern, test_signal };

struct Stream_Enables {
    std::array<bool, box_port_count> ports{};
    std::optional<unsigned> rhd_streams; // the RHD stream runs, with so many data streams
    std::array<Probe_Output, box_port_count> outputs{};

    bool any_port() const { return ports[0] || ports[1] || ports[2] || ports[3]; }

    bool any() const { return any_port() || rhd_streams.has_value(); }

    bool operator==(const Stream_Enables&) const = default;
};

} // namespace Pelgar::ORBE::test
