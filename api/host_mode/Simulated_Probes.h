// Layer: façade, host mode. The probes that a recording stands for. Called on the host's threads; reads the
// recording's beginning once.
#pragma once

#include <cstdint>
#include <string>

namespace Pelgar::ORBE::npoe_adapter {

// Bit i: the recording's first MiB has rows of probe port i + 1. 0 where it cannot be read.
std::uint32_t ports_in_recording(const std::string& path);

// The serial number of the probe on a port, index 0..3.
constexpr std::uint64_t simulated_serial_number(unsigned port) {
    constexpr std::uint64_t first = 900'000'001;
    return first + port;
}

} // namespace Pelgar::ORBE::npoe_adapter
