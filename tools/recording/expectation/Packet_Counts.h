// Tools, recording library. How many packets of each kind a host must receive when a recording is played.
#pragma once

#include "expectation/ADC_Model.h"
#include "expectation/Port_Model.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Pelgar::ORBE::recording {

class Packet_Counts {
public:
    Packet_Counts();

    // Takes the next whole piece of 1 MiB.
    void add_piece(std::span<const std::uint8_t> piece);

    // `port` is the API's number, 1..4.
    std::uint64_t of_port(unsigned port) const { return m_port_packets.at(port - 1); }

    std::uint64_t of_adc() const { return m_adc_packets; }

private:
    std::vector<Port_Model> m_ports;
    ADC_Model m_adc;
    std::array<std::uint64_t, port_count> m_port_packets{};
    std::uint64_t m_adc_packets = 0;
};

} // namespace Pelgar::ORBE::recording
