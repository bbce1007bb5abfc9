#include "Box_UART.h"

namespace Pelgar::ORBE::test {

namespace {

constexpr std::uint32_t receive_data_valid = 1U << 0;
constexpr std::uint32_t transmit_fifo_empty = 1U << 2;

} // namespace

void Box_UART::transmit(std::uint8_t byte, Probe_Port& port) {
    const auto answer = port.headstage().take(byte, port.is_locked());
    m_received.insert(m_received.end(), answer.begin(), answer.end());
}

std::uint32_t Box_UART::read_status() const {
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
