// Layer: device controller, probe link. The EEPROMs on the probe link and what they hold, by register.
// Constants only.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

// Registers are addressed by one byte.
constexpr unsigned eeprom_size = 256;

// On the probe's flex.
namespace probe_eeprom {

constexpr std::uint8_t address = 0xA0;
constexpr std::uint8_t serial_number = 0; // lowest byte first
constexpr std::uint8_t serial_number_length = 8;
constexpr std::uint8_t part_number = 40; // text
constexpr unsigned part_number_max_length = 40;

} // namespace probe_eeprom

// On the headstage. Where the part number lies depends on the version.
namespace hs_eeprom {

constexpr std::uint8_t address = 0xA4;
constexpr std::uint8_t version = 0; // two bytes, lowest first
constexpr unsigned version_5_2 = 0x0205;
constexpr unsigned version_5_3 = 0x0305;
constexpr std::uint8_t part_number_5_2 = 20;
constexpr std::uint8_t part_number_5_3 = 10;

} // namespace hs_eeprom

} // namespace Pelgar::ORBE
