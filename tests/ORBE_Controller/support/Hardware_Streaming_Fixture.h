// Test support: a controller in hardware mode, and what its stream writes to and prints.
#pragma once

#include "Controller_Fixture.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace Pelgar::ORBE::test {

inline constexpr std::size_t mebibyte = 0x100000;

// What the demultiplexer prints of a transfer that it refuses at its first byte, so that only its arrival
// shows.
inline constexpr const char* refused_transfer =
    "Async_PSB_And_RHD_Demux : Main mux data invalid, discarding data packet\n";

class Hardware_Streaming : public Opened_Controller_Fixture {
protected:
    static constexpr std::uint32_t continuous_mode = 0x1000;
    static constexpr std::uint32_t rhd_streams = 0x1000 + 4 * 0x14;
    static constexpr std::uint32_t ttl_out = 0x1000 + 4 * 0x15;
    static constexpr std::uint32_t ttl_in = 0x1000 + 4 * 0x23;
    static constexpr std::uint32_t fsm_trigger = 0x10A4;
};

} // namespace Pelgar::ORBE::test
