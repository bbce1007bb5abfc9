#include "Box_UART.h"

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint32_t receive_data_valid = 1U << 0;
constexpr std::uint32_t transmit_fifo_empty = 1U << 2;

// The driver looks once when it has sent and ten times while it waits.
constexpr unsigned looks_of_a_transaction = 11;

} // namespace

void Box_UART::transmit(std::uint8_t byte, Probe_Port& port) {
    const auto answer = port.headstage().take(byte, port.is_locked());
    if (answer.empty()) {
        return;
    }
    if (port.headstage().last_answer_is_late()) {
        m_late.insert(m_late.end(), answer.begin(), answer.end());
        m_looks_until_late = looks_of_a_transaction;
    } else {
        m_received.insert(m_received.end(), answer.begin(), answer.end());
    }
}

std::uint32_t Box_UART::read_status() {
    if (m_looks_until_late > 0) {
        --m_looks_until_late;
    } else if (!m_late.empty()) {
        m_received.insert(m_received.end(), m_late.begin(), m_late.end());
        m_late.clear();
    }
    return transmit_fifo_empty | (m_received.empty() ? 0 : receive_data_valid);
}

std::uint32_t Box_UART::receive() {
    if (m_received.empty()) {
        ++m_reads_of_nothing;
        return 0;
    }
    const std::uint8_t byte = m_received.front();
    m_received.pop_front();
    return byte;
}

} // namespace Pelgar::ORBE::test
