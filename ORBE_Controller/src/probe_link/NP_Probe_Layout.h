// Layer: device controller, probe link. How the shift-register chains of the probe ASIC are laid out: which
// bit of which chain connects an electrode, selects a reference, holds a gain code or calibrates an ADC.
// Constants only.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::probe_layout {

constexpr std::uint32_t channel_count = 384;
constexpr std::uint32_t electrode_count = 960;
constexpr std::uint32_t adc_count = 32;

// Banks 0 and 1 offer an electrode to every channel, bank 2 to the lower half of the channels only.
// Electrode number = bank * 384 + channel.
constexpr std::uint8_t bank_count = 3;
constexpr std::uint8_t short_bank = 2;
constexpr std::uint32_t short_bank_channel_count = 192;
constexpr std::uint8_t disconnected_bank = 255;

// Channel 191 reaches the internal reference electrodes 191, 575 and 959, one a bank.
constexpr std::uint32_t reference_channel = 191;
// The bank among them that is used is kept as a byte.
constexpr unsigned int_ref_bank_width = 8;

// The reference groups' bits, in this order.
constexpr std::uint8_t reference_ext = 0;
constexpr std::uint8_t reference_tip = 1;
constexpr std::uint8_t reference_internal = 2;
constexpr std::uint8_t reference_count = 3;

constexpr std::uint8_t gain_code_count = 8;

// Shank chain: the odd electrodes lie before the tip electrodes' bits in descending order, the even ones
// behind them in ascending order.
constexpr std::size_t shank_bytes = 121;
constexpr std::size_t shank_ext_electrode_2 = 2;
constexpr std::size_t shank_electrode_1 = 482;
constexpr std::size_t shank_tip_electrode_1 = 483;
constexpr std::size_t shank_tip_electrode_2 = 484;
constexpr std::size_t shank_electrode_0 = 485;
constexpr std::size_t shank_ext_electrode_1 = 965;

// Base chains: one for the even channels and one for the odd channels, 192 slots each.
constexpr std::size_t base_bytes = 306;
constexpr std::size_t base_slots = 192;

// References: three bits a slot, the last slot first.
constexpr std::size_t base_references = 0;

// Channel bytes: one a slot, in ascending order.
constexpr std::size_t base_channel_bytes = 576;
constexpr std::size_t base_channel_byte_width = 8;
constexpr unsigned gain_code_width = 3;
constexpr std::size_t channel_standby_bit = 6;
constexpr std::size_t channel_ap_filter_bit = 7;

// ADC calibration: eight groups of 42 bits, the last group first. A group holds two ADCs: both comparator
// settings (10 bits an ADC), then both ramp settings (11 bits an ADC).
constexpr std::size_t base_first_comparator = 2406;
constexpr std::size_t base_first_ramp = 2426;
constexpr std::size_t adc_group_width = 42;
constexpr std::size_t adc_comparator_width = 10;
constexpr std::size_t adc_ramp_width = 11;
constexpr unsigned comp_p_width = 5;
constexpr unsigned comp_n_width = 5;
constexpr unsigned slope_width = 3;
constexpr unsigned fine_width = 2;
constexpr unsigned coarse_width = 2;
constexpr unsigned cfix_width = 4;

} // namespace Pelgar::ORBE::probe_layout
