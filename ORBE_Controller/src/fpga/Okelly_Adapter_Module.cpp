#include "fpga/Okelly_Adapter_Module.h"

#include "common/Console.h"
#include "common/Waiting.h"
#include "fpga/FPGA_Register_Map.h"

#include <chrono>
#include <limits>

namespace Pelgar::ORBE {

namespace okelly = register_map::okelly;

namespace {

constexpr double spi_base_clock_mhz = 50.0;
constexpr std::chrono::milliseconds pll_poll_interval{10};

constexpr std::uint32_t offset_of(std::uint8_t endpoint) {
    const std::uint32_t index =
        endpoint < okelly::first_trigger_in ? endpoint : endpoint - okelly::trigger_in_gap;
    return index * okelly::bytes_per_register;
}

// Bits that are shifted beyond the register are lost, however far the shift.
constexpr std::uint32_t shift_left(std::uint32_t value, unsigned bits) {
    return bits < std::numeric_limits<std::uint32_t>::digits ? value << bits : 0;
}

} // namespace

Okelly_Adapter_Module::Okelly_Adapter_Module(I_MemMapped_AXI* axi, std::uint32_t base_address)
    : A_FPGA_Module("Okelly_Adapter_Module", axi, base_address) {}

void Okelly_Adapter_Module::set_continous_mode(bool on) {
    write_endpoint(okelly::mode, on ? okelly::mode_continuous : 0);
}

void Okelly_Adapter_Module::set_max_time_step(unsigned time_step) {
    write_endpoint(okelly::max_time_step, time_step);
}

void Okelly_Adapter_Module::set_miso_delay(unsigned port, unsigned delay) {
    constexpr unsigned port_count =
        std::numeric_limits<std::uint32_t>::digits / okelly::miso_delay_bits_per_port;
    write_endpoint(okelly::miso_delay,
                   port < port_count ? delay << (okelly::miso_delay_bits_per_port * port) : 0);
}

void Okelly_Adapter_Module::set_ttl_out_value(unsigned value) {
    write_endpoint(okelly::ttl_out, value);
}

unsigned Okelly_Adapter_Module::get_ttl_in_value() const {
    return read_endpoint(okelly::ttl_in);
}

void Okelly_Adapter_Module::trigger_fsm() {
    write_endpoint(okelly::acquisition_trigger, okelly::acquisition_trigger_fsm);
}

void Okelly_Adapter_Module::update_bank_cmd(std::uint8_t bank, std::uint16_t index, std::uint16_t command,
                                            std::uint8_t slot) {
    write_endpoint(okelly::aux_ram_index, index);
    write_endpoint(okelly::aux_ram_bank, bank);
    write_endpoint(okelly::aux_ram_command, command);
    write_endpoint(okelly::triggers, shift_left(okelly::trigger_write_aux_ram, slot) & okelly::trigger_mask);
}

void Okelly_Adapter_Module::set_aux_cmds(std::uint8_t bank, std::uint8_t slot,
                                         const std::vector<std::uint16_t>& commands) {
    if (bank > okelly::aux_largest_bank || slot > okelly::aux_largest_slot) {
        console::err("invalid argument\n");
        return;
    }
    if (commands.empty()) {
        console::err("cmd list empty\n");
        return;
    }
    for (std::size_t i = 0; i < commands.size(); ++i) {
        update_bank_cmd(bank, static_cast<std::uint16_t>(i), commands[i], slot);
    }
    const unsigned shift = okelly::aux_list_end_bits_per_slot * slot;
    const auto end_index = static_cast<std::uint32_t>(commands.size() - 1) & okelly::aux_list_end_mask;
    const std::uint32_t others = read_endpoint(okelly::aux_list_end) & ~(okelly::aux_list_end_mask << shift);
    write_endpoint(okelly::aux_list_end, others | (end_index << shift));
}

void Okelly_Adapter_Module::set_spi_freq(std::uint8_t m, std::uint8_t d) {
    write_endpoint(okelly::spi_clock, (std::uint32_t{m} << okelly::spi_clock_multiplier_shift) + d);
    write_endpoint(okelly::triggers, okelly::trigger_program_spi_clock);
    console::out("Setting PLL freq to ", static_cast<float>(m * spi_base_clock_mhz / d), " MHz\n");
    while (read_endpoint(okelly::spi_clock_state) != okelly::spi_clock_locked) {
        console::out("Waiting for PLL to lock\n");
        wait_for(pll_poll_interval);
    }
}

void Okelly_Adapter_Module::enable_streams(const std::set<unsigned>& streams) {
    std::uint32_t mask = 0;
    for (const unsigned stream : streams) {
        if (stream < okelly::stream_count) {
            mask |= 1U << stream;
        }
    }
    write_endpoint(okelly::enabled_streams, mask);
    m_enabled_stream_count = static_cast<unsigned>(streams.size());
}

std::uint32_t Okelly_Adapter_Module::read_endpoint(std::uint8_t endpoint) const {
    return read(offset_of(endpoint));
}

void Okelly_Adapter_Module::write_endpoint(std::uint8_t endpoint, std::uint32_t value) {
    write(offset_of(endpoint), value);
}

} // namespace Pelgar::ORBE
