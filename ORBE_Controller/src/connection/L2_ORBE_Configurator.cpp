#include "connection/L2_ORBE_Configurator.h"

#include "common/Console.h"
#include "fpga/FPGA_Register_Map.h"

#include <loguru.hpp>

#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE {

namespace configuration = register_map::configuration;
namespace np_status = register_map::np_status;

ORBE_Configurator::ORBE_Configurator(std::shared_ptr<GPIO_Module> gpio) : m_gpio(std::move(gpio)) {}

void ORBE_Configurator::reset_configuration() {
    const std::lock_guard lock(m_mutex);
    m_gpio->write_data(0);
}

void ORBE_Configurator::enable_np_streams(std::initializer_list<unsigned> ports) {
    std::uint32_t mask = 0;
    for (const unsigned port : ports) {
        if (port >= configuration::np_stream_count) {
            throw std::runtime_error("enable_np_streams argument invalid");
        }
        mask |= 1U << port;
    }
    replace_bits(configuration::np_stream_enable_mask, mask);
}

void ORBE_Configurator::assign_uart_to_np_channel(unsigned char channel) {
    if (channel >= configuration::uart_channel_count) {
        throw std::runtime_error("assign_uart_to_np_channel invalid");
    }
    replace_bits(configuration::uart_channel_mask,
                 std::uint32_t{channel} << configuration::uart_channel_shift);
}

void ORBE_Configurator::set_one_mode(bool one) {
    console::out(one ? "Setting ONE mode\n" : "Setting CORE mode\n");
    set_bit(configuration::one_mode, one);
}

void ORBE_Configurator::set_tlast_generation_mode_for_Windows_os(bool on) {
    if (on) {
        console::out("Setting Windows mode\n");
    }
    set_bit(configuration::tlast_for_windows, on);
}

void ORBE_Configurator::set_VLM004_power(bool on) {
    console::out(on ? "set_VLM004_Power on\n" : "set_VLM004_Power off\n");
    set_bit(configuration::vlm004_power, on);
}

void ORBE_Configurator::soft_trigger_pulse() {
    set_bit(configuration::soft_trigger, true);
    set_bit(configuration::soft_trigger, false);
}

void ORBE_Configurator::assign_port_4_to_np(bool on) {
    if (on) {
        console::out("Assigning port_4 to NP\n");
    }
    set_bit(configuration::port_4_to_np, on);
}

void ORBE_Configurator::set_hw_trigger_ttl_source(unsigned ttl_input_index) {
    const unsigned written = ttl_input_index & configuration::ttl_source_written_bits;
    if (written != ttl_input_index) {
        console::err("ttl_input_index > 7 truncating\n");
    }
    replace_bits(configuration::ttl_source_mask, written << configuration::ttl_source_shift);
}

bool ORBE_Configurator::print_np_ports_status(unsigned status) {
    LOG_F(INFO, "# Appearent status of NP Ports  #");
    for (unsigned port = 0; port < np_status::port_count; ++port) {
        LOG_F(INFO, "NP Port %u PCLK Locked : %s", port + 1, (status & (1U << port)) != 0 ? "Yes" : "No");
    }
    return (status & np_status::pll_lock_mask) != 0;
}

void ORBE_Configurator::replace_bits(std::uint32_t mask, std::uint32_t value) {
    const std::lock_guard lock(m_mutex);
    m_gpio->write_data((m_gpio->read_data() & ~mask) | value);
}

void ORBE_Configurator::set_bit(std::uint32_t bit, bool value) {
    replace_bits(bit, value ? bit : 0);
}

} // namespace Pelgar::ORBE
