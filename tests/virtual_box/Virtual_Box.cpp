#include "Virtual_Box.h"

#include "Row_Source.h"

#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint32_t nobody_answers = 0xFFFF'FFFF;

// The configuration register.
constexpr std::uint32_t uart_channel_shift = 4;
constexpr std::uint32_t uart_channel_mask = 0x3;
constexpr std::uint32_t probe_power = 1U << 8;
constexpr std::uint32_t port_4_to_np = 1U << 10;
constexpr std::size_t shared_port = 3;

// 19 April 2024, 25 degrees.
constexpr std::uint32_t default_build_timestamp = (19U << 27) | (4U << 23) | (24U << 17);
constexpr std::uint32_t default_temperature = 0x9770;
constexpr std::uint32_t default_efuse = 0x0BE0'0001;

} // namespace

Virtual_Box::Virtual_Box(recording::Recording_Options stream)
    : Virtual_Box(std::make_unique<Row_Source>(std::move(stream))) {}

Virtual_Box::Virtual_Box(std::unique_ptr<A_Row_Source> rows)
    : m_stream(std::move(rows)), m_designs{{neuropixels_flash_address, neuropixels_signature}} {
    m_registers.set_value(signature, neuropixels_signature);
    m_registers.set_value(build_timestamp, default_build_timestamp);
    m_registers.set_value(temperature, default_temperature);
    m_registers.set_value(efuse, default_efuse);
}

Virtual_Box::Open_Result Virtual_Box::open() {
    const std::lock_guard lock(m_mutex);
    ++m_opens;
    Open_Result result = Open_Result::opened;
    if (!m_open_results.empty()) {
        result = m_open_results.front();
        m_open_results.pop_front();
    }
    m_open = result == Open_Result::opened;
    m_stream.set_connected(m_open);
    return result;
}

void Virtual_Box::close() {
    const std::lock_guard lock(m_mutex);
    m_open = false;
    m_stream.set_connected(false);
}

void Virtual_Box::write_register(std::uint32_t address, std::uint32_t value) {
    const std::lock_guard lock(m_mutex);
    if (!m_open) {
        ++m_accesses_while_closed;
        return;
    }
    if (m_failing_write == write_of(address, value)) {
        m_failing_write.reset();
        throw std::runtime_error("register space lost");
    }
    m_registers.write_register(address, value);
    switch (address) {
    case configuration:
        apply_configuration(value);
        break;
    case foreign_icap_number:
        m_foreign_icap.write_register_number(value);
        break;
    case foreign_icap_value:
        if (m_foreign_icap.takes_value()) {
            m_foreign_icap.write_value(value);
        } else {
            m_uart.transmit(static_cast<std::uint8_t>(value), uart_port());
        }
        break;
    case foreign_icap_start:
        if (const auto flash_address = m_foreign_icap.write_start(value)) {
            reboot(*flash_address);
        }
        break;
    case hw_icap_fifo:
        m_hw_icap.write_fifo(value);
        break;
    case hw_icap_control:
        m_hw_icap.write_control(value);
        break;
    default:
        m_spi.write(address, value);
        m_rhd.write(address, value);
        update_stream();
        break;
    }
}

std::uint32_t Virtual_Box::read_register(std::uint32_t address) {
    const std::lock_guard lock(m_mutex);
    if (!m_open) {
        ++m_accesses_while_closed;
        return nobody_answers;
    }
    if (const auto answer = answer_of(address)) {
        m_registers.set_value(address, *answer);
    }
    const std::uint32_t value = m_registers.read_register(address);
    if (address == hw_icap_control) {
        if (const auto flash_address = m_hw_icap.take_boot_address()) {
            reboot(*flash_address);
        }
    }
    return value;
}

std::optional<std::uint32_t> Virtual_Box::answer_of(std::uint32_t address) {
    switch (address) {
    case pll_locks:
        return read_pll_locks();
    case uart_receive:
        return m_uart.receive();
    case uart_status:
        return m_uart.read_status();
    case foreign_icap_status:
        return m_foreign_icap.read_status();
    case hw_icap_control:
        return m_hw_icap.read_control();
    case hw_icap_status:
        return m_hw_icap.read_status();
    case RHD_Interface_Model::spi_clock_state:
        return m_rhd.read_spi_clock_state();
    default:
        return m_spi.read(address);
    }
}

std::uint32_t Virtual_Box::read_pll_locks() {
    std::uint32_t locks = 0;
    for (std::size_t port = 0; port < m_ports.size(); ++port) {
        locks |= m_ports[port].read_lock() ? 1U << port : 0U;
    }
    update_stream();
    return locks;
}

void Virtual_Box::apply_configuration(std::uint32_t value) {
    const bool power = (value & probe_power) != 0;
    for (std::size_t port = 0; port < m_ports.size(); ++port) {
        const bool assigned = port != shared_port || (value & port_4_to_np) != 0;
        if (m_ports[port].set_on(power && assigned)) {
            m_stream.restart_probe(port);
        }
    }
    update_stream();
}

void Virtual_Box::update_stream() {
    const std::uint32_t enabled = m_registers.value(configuration);
    Stream_Enables enables;
    for (std::size_t port = 0; port < m_ports.size(); ++port) {
        enables.ports[port] = ((enabled >> port) & 1U) != 0 && m_ports[port].is_locked();
        enables.outputs[port] = m_ports[port].headstage().probe_output();
    }
    enables.rhd_streams = m_rhd.running_streams();
    m_stream.enable(enables);
}

Probe_Port& Virtual_Box::uart_port() {
    return m_ports[(m_registers.value(configuration) >> uart_channel_shift) & uart_channel_mask];
}

// The FPGA drops off the bus: what it held is gone, and so is every connection to it.
void Virtual_Box::reboot(std::uint32_t flash_address) {
    m_boots.push_back(flash_address);
    if (const auto design = m_designs.find(flash_address); design != m_designs.end()) {
        m_registers.set_value(signature, design->second);
    }
    m_registers.set_value(configuration, 0);
    m_uart.reset();
    m_foreign_icap = {};
    m_hw_icap = {};
    m_rhd = {};
    m_spi.reset();
    apply_configuration(0);
    m_stream.reset();
    m_open = false;
    m_stream.set_connected(false);
}

std::size_t Virtual_Box::opens() const {
    const std::lock_guard lock(m_mutex);
    return m_opens;
}

std::size_t Virtual_Box::accesses_while_closed() const {
    const std::lock_guard lock(m_mutex);
    return m_accesses_while_closed;
}

std::size_t Virtual_Box::unread_uart_bytes() const {
    const std::lock_guard lock(m_mutex);
    return m_uart.unread();
}

std::size_t Virtual_Box::reads_of_empty_uart() const {
    const std::lock_guard lock(m_mutex);
    return m_uart.reads_of_nothing();
}

std::vector<std::uint32_t> Virtual_Box::boots() const {
    const std::lock_guard lock(m_mutex);
    return m_boots;
}

void Virtual_Box::lock_at_look(std::size_t port, std::optional<std::size_t> look) {
    const std::lock_guard lock(m_mutex);
    m_ports.at(port).lock_at_look(look);
    update_stream();
}

void Virtual_Box::set_register(std::uint32_t address, std::uint32_t value) {
    const std::lock_guard lock(m_mutex);
    m_registers.set_value(address, value);
}

void Virtual_Box::fail_write(std::uint32_t address, std::uint32_t value) {
    const std::lock_guard lock(m_mutex);
    m_failing_write = write_of(address, value);
}

void Virtual_Box::put_design_into_flash(std::uint32_t address, std::uint32_t design_signature) {
    const std::lock_guard lock(m_mutex);
    m_designs[address] = design_signature;
}

void Virtual_Box::queue_open_results(const std::vector<Open_Result>& results) {
    const std::lock_guard lock(m_mutex);
    m_open_results.insert(m_open_results.end(), results.begin(), results.end());
}

void Virtual_Box::foreign_icap_done_at_read(std::optional<unsigned> read) {
    const std::lock_guard lock(m_mutex);
    m_foreign_icap.done_at_read(read);
}

void Virtual_Box::set_hw_icap_behaviour(HW_ICAP_Model::Behaviour behaviour) {
    const std::lock_guard lock(m_mutex);
    m_hw_icap.set_behaviour(behaviour);
}

void Virtual_Box::let_spi_clock_lock(bool locks) {
    const std::lock_guard lock(m_mutex);
    m_rhd.let_spi_clock_lock(locks);
}

} // namespace Pelgar::ORBE::test
