// Layer: device controller. The register space of the box: where each module sits, and the offsets, fields
// and fixed values of its registers. Offsets are bytes from the module's base address.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::register_map {

// Byte addresses of the modules in the register space.
namespace base_address {
inline constexpr std::uint32_t configuration_gpio = 0x0000;
inline constexpr std::uint32_t build_timestamp_gpio = 0x0008;
inline constexpr std::uint32_t np_status_gpio = 0x0200;
// The UART and the design's own configuration port share one address: which of the two answers depends on the
// design that is loaded.
inline constexpr std::uint32_t foreign_hw_icap = 0x0400;
inline constexpr std::uint32_t uart = 0x0400;
inline constexpr std::uint32_t spi = 0x0500;
inline constexpr std::uint32_t xadc = 0x0800;
inline constexpr std::uint32_t okelly_adapter = 0x1000;
inline constexpr std::uint32_t axi_stream_fifo = 0x1200;
inline constexpr std::uint32_t hw_icap = 0x1400;
inline constexpr std::uint32_t efuse_gpio = 0x1600;
} // namespace base_address

namespace gpio {
inline constexpr std::uint32_t data = 0x0;
inline constexpr std::uint32_t second_data = 0x8;
} // namespace gpio

// The one register of the configuration GPIO. Bits 31..14 have no use.
namespace configuration {
inline constexpr unsigned np_stream_count = 4;
inline constexpr std::uint32_t np_stream_enable_mask = 0x0000'000F; // bit i: stream of NP port index i
inline constexpr unsigned uart_channel_count = 4;
inline constexpr std::uint32_t uart_channel_mask = 0x0000'0030;
inline constexpr unsigned uart_channel_shift = 4;
inline constexpr std::uint32_t one_mode = 1U << 6; // set: ONE mode, clear: CORE mode
inline constexpr std::uint32_t tlast_for_windows = 1U << 7;
inline constexpr std::uint32_t vlm004_power = 1U << 8;
inline constexpr std::uint32_t soft_trigger = 1U << 9;
inline constexpr std::uint32_t port_4_to_np = 1U << 10;
inline constexpr std::uint32_t ttl_source_mask = 0x0000'3800;
inline constexpr unsigned ttl_source_shift = 11;
// Three bits are set aside for the TTL source, two of them are ever written: four inputs can be selected.
inline constexpr unsigned ttl_source_written_bits = 0x3;
} // namespace configuration

namespace np_status {
inline constexpr unsigned port_count = 4;
inline constexpr std::uint32_t pll_lock_mask = 0x0000'000F; // bit i: NP port index i
} // namespace np_status

namespace uart {
inline constexpr std::uint32_t receive_data = 0x0;
inline constexpr std::uint32_t transmit_data = 0x4;
inline constexpr std::uint32_t status = 0x8;
inline constexpr std::uint32_t status_receive_data_valid = 1U << 0;
inline constexpr std::uint32_t status_transmit_fifo_empty = 1U << 2;
inline constexpr std::uint32_t status_interrupts_enabled = 1U << 4;
// Everything else reports a full FIFO or a damaged byte.
inline constexpr std::uint32_t status_error_mask =
    ~(status_receive_data_valid | status_transmit_fifo_empty | status_interrupts_enabled);
inline constexpr std::uint32_t send_count_mask = 0xFF;
} // namespace uart

// The SPI master in manual slave-select mode. Both FIFOs hold `fifo_depth` bytes.
namespace spi {
inline constexpr std::uint32_t control = 0x60;
inline constexpr std::uint32_t control_enable = 1U << 1;
inline constexpr std::uint32_t control_master = 1U << 2;
inline constexpr std::uint32_t control_manual_slave_select = 1U << 7;
inline constexpr std::uint32_t control_inhibit_transfer = 1U << 8;
inline constexpr std::uint32_t control_transfer =
    control_enable | control_master | control_manual_slave_select;                         // 0x86
inline constexpr std::uint32_t control_load = control_transfer | control_inhibit_transfer; // 0x186
inline constexpr std::uint32_t status = 0x64;
inline constexpr std::uint32_t status_receive_fifo_empty = 1U << 0;
inline constexpr std::uint32_t status_transmit_fifo_empty = 1U << 2;
inline constexpr std::uint32_t transmit_data = 0x68;
inline constexpr std::uint32_t receive_data = 0x6C;
inline constexpr std::uint32_t slave_select = 0x70; // one line, active low
inline constexpr std::uint32_t slave_select_flash = 0;
inline constexpr std::uint32_t slave_select_none = 1;
inline constexpr std::size_t fifo_depth = 16;
} // namespace spi

namespace xadc {
inline constexpr std::uint32_t temperature = 0x200;
inline constexpr std::uint32_t temperature_mask = 0x0000'FFF0;
inline constexpr unsigned temperature_shift = 4;
} // namespace xadc

// Endpoints in the numbering of the Opal Kelly host interface: wire-ins from 0x00, wire-outs from 0x20,
// trigger-ins from 0x40. The trigger-ins lie 0x18 registers lower than their numbers say.
namespace okelly {
inline constexpr std::uint8_t first_trigger_in = 0x40;
inline constexpr std::uint32_t trigger_in_gap = 0x18;
inline constexpr std::uint32_t bytes_per_register = 4;

inline constexpr std::uint8_t mode = 0x00;
inline constexpr std::uint32_t mode_continuous = 1U << 1;
inline constexpr std::uint8_t max_time_step = 0x01;
inline constexpr std::uint8_t spi_clock = 0x03;
inline constexpr unsigned spi_clock_multiplier_shift = 8;
inline constexpr std::uint8_t miso_delay = 0x04;
inline constexpr unsigned miso_delay_bits_per_port = 4;
inline constexpr std::uint8_t aux_ram_index = 0x05;
inline constexpr std::uint8_t aux_ram_bank = 0x06;
inline constexpr std::uint8_t aux_ram_command = 0x07;
inline constexpr std::uint8_t aux_list_end = 0x0B;
inline constexpr std::uint32_t aux_list_end_mask = 0x3FF;
inline constexpr unsigned aux_list_end_bits_per_slot = 10;
inline constexpr unsigned aux_largest_bank = 2;
inline constexpr unsigned aux_largest_slot = 2;
inline constexpr std::uint8_t enabled_streams = 0x14;
inline constexpr unsigned stream_count = 32;
inline constexpr std::uint8_t ttl_out = 0x15;
inline constexpr std::uint8_t ttl_in = 0x23;
inline constexpr std::uint8_t spi_clock_state = 0x24;
inline constexpr std::uint32_t spi_clock_locked = 3;
inline constexpr std::uint8_t triggers = 0x40;
inline constexpr std::uint32_t trigger_program_spi_clock = 1U << 0;
inline constexpr std::uint32_t trigger_write_aux_ram = 1U << 1; // of slot 0; one bit higher a slot
inline constexpr std::uint32_t trigger_mask = 0xFF;
inline constexpr std::uint8_t acquisition_trigger = 0x41;
inline constexpr std::uint32_t acquisition_trigger_fsm = 1U << 0;
} // namespace okelly

namespace hw_icap {
inline constexpr std::uint32_t write_fifo = 0x100;
inline constexpr std::uint32_t control = 0x10C;
inline constexpr std::uint32_t control_write = 1U << 0;
inline constexpr std::uint32_t status = 0x110;
inline constexpr std::uint32_t status_done = 1U << 0;
} // namespace hw_icap

namespace foreign_hw_icap {
inline constexpr std::uint32_t register_number = 0x0;
inline constexpr std::uint32_t register_value = 0x4;
inline constexpr std::uint32_t start = 0x8;
inline constexpr std::uint32_t start_run = 1;
inline constexpr std::uint32_t start_idle = 0;
inline constexpr std::uint32_t status = 0xC;
inline constexpr std::uint32_t status_done = 1U << 0;
} // namespace foreign_hw_icap

// The configuration logic of the FPGA, which both configuration ports talk to.
namespace configuration_logic {
inline constexpr std::uint32_t register_command = 0x04;
inline constexpr std::uint32_t register_warm_boot_start_address = 0x10;
inline constexpr std::uint32_t command_reprogram = 0x0F;
inline constexpr std::uint32_t packet_dummy = 0xFFFF'FFFF;
inline constexpr std::uint32_t packet_sync = 0xAA99'5566;
inline constexpr std::uint32_t packet_no_operation = 0x2000'0000;
inline constexpr std::uint32_t packet_write_warm_boot_start_address = 0x3002'0001;
inline constexpr std::uint32_t packet_write_command = 0x3000'8001;
} // namespace configuration_logic

} // namespace Pelgar::ORBE::register_map
