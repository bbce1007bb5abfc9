// Test support. The file that says which packets a host must receive from a recording, as it lies in memory:
// the head, the electrode packets of port 1, of port 2, of port 3, of port 4, then the ADC packets. Low byte
// first. Needs no standard library.
#pragma once

#include <NeuropixAPI.h>

#include <cstdint>

namespace Pelgar::ORBE::host {

inline constexpr unsigned port_count = 4;

// What one queue of the library holds at the most. A host that does not ask for more than this of any port,
// nor of the ADC, finds every packet, however late it asks.
inline constexpr std::uint32_t most_packets = 500;

// "HROAD001"
inline constexpr std::uint64_t expectation_magic = 0x3130'3044'414F'5248;

struct Expectation_Head {
    std::uint64_t magic;
    std::uint32_t electrode_packets[port_count];
    std::uint32_t adc_packets;
    std::uint32_t unused;
};

// The first eight samples are those of the ADC inputs.
struct Expected_ADC_Packet {
    Neuropixels::PacketInfo info;
    std::int16_t samples[12];
};

static_assert(sizeof(Expectation_Head) == 32);
static_assert(sizeof(Expected_ADC_Packet) == 32);

} // namespace Pelgar::ORBE::host
