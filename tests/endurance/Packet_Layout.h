// Endurance test. The two ways in which the library presents the box, as far as packets differ. A plain
// value.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE::test {

enum class Packet_Layout : std::uint8_t {
    own, // the box's own: values as converted, stamps in seconds, an LFP sample closes a packet
    host // the host mode: signed values, stamps of 100 kHz, twelve whole samples a packet
};

} // namespace Pelgar::ORBE::test
