// Layer: device controller. The SPI flash that the FPGA loads its designs from: commands, status bits, sizes
// and what lies where.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::configuration_flash {

inline constexpr std::uint8_t command_page_program = 0x02;
inline constexpr std::uint8_t command_read = 0x03;
inline constexpr std::uint8_t command_read_status = 0x05;
inline constexpr std::uint8_t command_write_enable = 0x06;
inline constexpr std::uint8_t command_read_flag_status = 0x70;
inline constexpr std::uint8_t command_read_identification = 0x9F;
inline constexpr std::uint8_t command_bulk_erase = 0xC7;
inline constexpr std::uint8_t command_sector_erase = 0xD8;

// Manufacturer, type and capacity.
inline constexpr std::size_t identification_bytes = 3;

inline constexpr std::uint8_t status_write_in_progress = 1U << 0;

// Addresses have three bytes, the most significant first.
inline constexpr unsigned address_high_shift = 16;
inline constexpr unsigned address_middle_shift = 8;
inline constexpr std::uint32_t size = 0x100'0000;
inline constexpr std::uint32_t sector_size = 0x1'0000;
inline constexpr std::uint32_t page_size = 0x100;

// The design that serves Neuropixels probes begins here.
inline constexpr std::uint32_t neuropixels_design_address = 0xB0'0000;

// The hardware record begins the last sector.
inline constexpr std::uint32_t hw_info_address = 0xFF'0000;

} // namespace Pelgar::ORBE::configuration_flash
