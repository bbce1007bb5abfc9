#include "sources/Packet_Intake.h"

#include <algorithm>

namespace Pelgar::ORBE::view {

namespace {

// The comparators lie behind twelve inputs.
constexpr std::size_t first_ttl = 12 + ADC_History::first_ttl_comparator;

} // namespace

void Packet_Intake::take(Probe_History& history, std::span<const Neuropixels::electrodePacket> packets) {
    m_packets.clear();
    for (const Neuropixels::electrodePacket& packet : packets) {
        Probe_History::Packet& taken = m_packets.emplace_back();
        taken.packet = &packet;
        for (std::size_t row = 0; row < taken.numbers.size(); ++row) {
            taken.numbers[row] = m_first + m_numbers.number_of(packet.timestamp[row]);
        }
        m_end = taken.numbers.back() + 1;
    }
    history.append(m_packets);
}

void Packet_Intake::take(ADC_History& history, std::span<const Neuropixels::PacketInfo> infos,
                         std::span<const std::int16_t> rows) {
    m_rows.resize(infos.size());
    for (std::size_t packet = 0; packet < infos.size(); ++packet) {
        ADC_History::Row& row = m_rows[packet];
        row.number = m_first + m_numbers.number_of(infos[packet].Timestamp);
        m_end = row.number + 1;
        const auto samples = rows.subspan(packet * adc_row_length, adc_row_length);
        std::copy_n(samples.begin(), ADC_History::analog_inputs, row.values);
        std::copy_n(samples.begin() + first_ttl, ADC_History::ttl_inputs,
                    row.values + ADC_History::analog_inputs);
    }
    history.append(m_rows);
}

} // namespace Pelgar::ORBE::view
