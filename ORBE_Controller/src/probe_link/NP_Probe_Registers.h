// Layer: device controller, probe link. The registers of the probe ASIC and of the headstage's serializer and
// deserializer that this layer uses, with their fields. Constants only.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

// Probe ASIC, I2C device 0xE0.
namespace asic {

constexpr std::uint8_t op_mode = 0x00;
constexpr std::uint8_t op_mode_record = 0x40;
constexpr std::uint8_t op_mode_calibrate = 0x20;
constexpr std::uint8_t op_mode_digital_test = 0x10;

// Power of the probe and its link. The fields are named after when initialisation sets them.
constexpr std::uint8_t link_power = 0x01;
constexpr std::uint8_t link_power_first = 0x10;
constexpr std::uint8_t link_power_last = 0xC0;
constexpr std::uint8_t link_power_quick_first = 0x30;
constexpr std::uint8_t link_power_all = link_power_first | link_power_last;

constexpr std::uint8_t cal_mod = 0x02;
constexpr std::uint8_t cal_mod_kept = 0x1F;
constexpr std::uint8_t cal_mod_osc_standby = 0x10;
constexpr std::uint8_t cal_mod_mode_0 = 0x80;
constexpr std::uint8_t cal_mod_mode_1 = 0x40;
constexpr std::uint8_t cal_mod_mode_3 = 0x20;

// Test and calibration registers.
constexpr std::uint8_t test_3 = 0x03;
constexpr std::uint8_t test_4 = 0x04;
constexpr std::uint8_t test_5 = 0x05;
constexpr std::uint8_t test_6 = 0x06;
constexpr std::uint8_t test_7 = 0x07;
constexpr std::uint8_t test_9 = 0x09;

// Judges the chain that was shifted in last, twice. Values from `sr_status_ok` on are good.
constexpr std::uint8_t sr_status = 0x08;
constexpr std::uint8_t sr_status_ok = 0x80;

// Shift-register chains: every byte written is shifted in.
constexpr std::uint8_t sr_base_odd = 0x0C;
constexpr std::uint8_t sr_base_even = 0x0D;
constexpr std::uint8_t sr_shank = 0x0E;
constexpr std::uint8_t sr_length_high = 0x0F;
constexpr std::uint8_t sr_length_low = 0x10;

} // namespace asic

// Headstage serializer, I2C device 0x80.
namespace serializer {

constexpr std::uint8_t device_id = 0x1E;
constexpr std::uint8_t expected_device_id = 9;

constexpr std::uint8_t mode = 0x04;
constexpr std::uint8_t mode_normal = 0x83;
constexpr std::uint8_t mode_prbs = 0xA3;

constexpr std::uint8_t config_14 = 0x0E;
constexpr std::uint8_t config_14_value = 0x42;
constexpr std::uint8_t config_15 = 0x0F;
constexpr std::uint8_t config_15_on = 0xFC;
constexpr std::uint8_t config_15_off = 0xFE;

} // namespace serializer

// Deserializer, I2C device 0x90.
namespace deserializer {

constexpr std::uint8_t device_id = 0x1E;
constexpr std::uint8_t expected_device_id = 10;

constexpr std::uint8_t mode = 0x04;
constexpr std::uint8_t mode_normal = 0x87;
constexpr std::uint8_t mode_prbs = 0xA7;

constexpr std::uint8_t prbs_error_count = 0x13;

} // namespace deserializer

} // namespace Pelgar::ORBE
