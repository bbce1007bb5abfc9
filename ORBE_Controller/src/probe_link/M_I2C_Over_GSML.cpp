#include "probe_link/M_I2C_Over_GSML.h"

#include "common/Console.h"
#include "fpga/UART_Module.h"

#include <loguru.hpp>

#include <array>
#include <stdexcept>

namespace Pelgar::ORBE {

namespace {

constexpr std::uint8_t command_byte = 0x79;
constexpr std::uint8_t acknowledge = 0xC3;
constexpr std::uint8_t read_bit = 0x01;
constexpr std::uint32_t receive_budget_ms = 10;

template <std::size_t length>
void send_frame(UART_Module& uart, const std::array<std::uint8_t, length>& frame) {
    uart.send(frame.data(), length);
}

void send_read_frame(UART_Module& uart, std::uint8_t device, std::uint8_t reg, std::uint8_t count) {
    send_frame<4>(uart, {command_byte, static_cast<std::uint8_t>(device | read_bit), reg, count});
}

} // namespace

I2C_Over_GSML_Module::I2C_Over_GSML_Module(UART_Module* uart) : m_uart(uart) {
    VLOG_SCOPE_F(1, "I2C_Over_GSML_Module");
}

I2C_Over_GSML_Module::~I2C_Over_GSML_Module() {
    VLOG_SCOPE_F(1, "~I2C_Over_GSML_Module");
}

void I2C_Over_GSML_Module::qbsc_writeI2C(std::uint8_t device, std::uint8_t reg, std::uint8_t value,
                                         bool ignore_ack_error) {
    send_frame<5>(*m_uart, {command_byte, device, reg, 1, value});
    std::uint8_t status = 0;
    m_uart->receive(&status, 1, receive_budget_ms);
    if (status != acknowledge) {
        console::err("qbsc_writeI2C ACK err\n");
        UART_Module::distrust_answer();
        if (!ignore_ack_error) {
            throw std::runtime_error("qbsc_writeI2C ACK error");
        }
        ++stat_write_transactions_with_error;
    }
    ++stat_write_transactions_total;
}

std::uint8_t I2C_Over_GSML_Module::qbsc_readI2C(std::uint8_t device, std::uint8_t reg, std::uint8_t* value) {
    send_read_frame(*m_uart, device, reg, 1);
    std::array<std::uint8_t, 2> answer{};
    m_uart->receive(answer.data(), answer.size(), receive_budget_ms);
    const auto [status, data] = answer;
    *value = data;
    if (status != acknowledge) {
        console::err("qbsc_readI2C err\n");
        UART_Module::distrust_answer();
        throw std::runtime_error("qbsc_readI2C error");
    }
    ++stat_read_transactions_total;
    return data;
}

void I2C_Over_GSML_Module::qbsc_readI2C_n_bytes(std::uint8_t device, std::uint8_t reg, std::uint8_t* buffer,
                                                std::uint8_t count) {
    send_read_frame(*m_uart, device, reg, count);
    std::uint8_t status = 0;
    m_uart->receive(&status, 1, receive_budget_ms);
    if (status != acknowledge) {
        console::err("qbsc_readI2C_n_bytes err\n");
        UART_Module::distrust_answer();
        throw std::runtime_error("qbsc_readI2C_n_bytes error");
    }
    m_uart->receive(buffer, count, receive_budget_ms);
}

void I2C_Over_GSML_Module::print_statistics() const {
    LOG_F(INFO, "stat_read_transactions_total : %d", stat_read_transactions_total);
    LOG_F(INFO, "stat_read_transactions_with_error : %d", stat_read_transactions_with_error);
    LOG_F(INFO, "stat_write_transactions_total : %d", stat_write_transactions_total);
    LOG_F(INFO, "stat_write_transactions_with_error : %d", stat_write_transactions_with_error);
}

std::uint8_t I2C_Over_GSML_Module::read_asic(std::uint8_t reg, std::uint8_t* value) {
    return qbsc_readI2C(asic_address, reg, value);
}

void I2C_Over_GSML_Module::write_asic(std::uint8_t reg, std::uint8_t value, bool ignore_ack_error) {
    qbsc_writeI2C(asic_address, reg, value, ignore_ack_error);
}

std::uint8_t I2C_Over_GSML_Module::read_serializer(std::uint8_t reg, std::uint8_t* value) {
    return qbsc_readI2C(serializer_address, reg, value);
}

void I2C_Over_GSML_Module::write_serializer(std::uint8_t reg, std::uint8_t value) {
    qbsc_writeI2C(serializer_address, reg, value, false);
}

std::uint8_t I2C_Over_GSML_Module::read_deserializer(std::uint8_t reg, std::uint8_t* value) {
    return qbsc_readI2C(deserializer_address, reg, value);
}

void I2C_Over_GSML_Module::write_deserializer(std::uint8_t reg, std::uint8_t value) {
    qbsc_writeI2C(deserializer_address, reg, value, false);
}

} // namespace Pelgar::ORBE
