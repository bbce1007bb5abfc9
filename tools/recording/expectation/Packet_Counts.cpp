#include "expectation/Packet_Counts.h"

namespace Pelgar::ORBE::recording {

Packet_Counts::Packet_Counts() {
    for (unsigned port = 1; port <= port_count; ++port) {
        m_ports.emplace_back(port);
    }
}

void Packet_Counts::add_piece(std::span<const std::uint8_t> piece) {
    for (std::size_t i = 0; i < m_ports.size(); ++i) {
        m_ports[i].feed(piece);
        while (m_ports[i].next() != nullptr) {
            ++m_port_packets[i];
        }
    }
    m_adc.feed(piece);
    while (m_adc.next() != nullptr) {
        ++m_adc_packets;
    }
}

} // namespace Pelgar::ORBE::recording
