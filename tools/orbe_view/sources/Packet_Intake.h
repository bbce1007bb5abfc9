// Program orbe-view, sources. Puts the packets of the host mode into the histories, by the numbers that their
// stamps stand for. One object a stream, on the stream's thread; waits for whoever reads the history, which
// takes a fraction of a millisecond.
#pragma once

#include "formats/Sample_Numbers.h"
#include "history/Histories.h"

#include <NeuropixAPI.h>

#include <cstdint>
#include <span>
#include <vector>

namespace Pelgar::ORBE::view {

class Packet_Intake {
public:
    // Stamp 0 is sample `first`.
    explicit Packet_Intake(std::uint64_t first) : m_first(first) {}

    void take(Probe_History& history, std::span<const Neuropixels::electrodePacket> packets);

    // Rows of 24: twelve inputs, and their comparators.
    static constexpr std::size_t adc_row_length = 24;
    void take(ADC_History& history, std::span<const Neuropixels::PacketInfo> infos,
              std::span<const std::int16_t> rows);

    // The number of the sample behind the last one.
    std::uint64_t end() const { return m_end; }

private:
    std::uint64_t m_first;
    std::uint64_t m_end = 0;
    recorder::Sample_Numbers m_numbers;
    std::vector<Probe_History::Packet> m_packets;
    std::vector<ADC_History::Row> m_rows;
};

} // namespace Pelgar::ORBE::view
