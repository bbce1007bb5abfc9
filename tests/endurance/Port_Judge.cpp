#include "Port_Judge.h"

#include <algorithm>

namespace Pelgar::ORBE::test {

namespace {

using Neuropixels::electrodePacket;

constexpr std::size_t rows = recording::slots_per_sample;
constexpr float own_sample_period = 3.3333334e-5F;

} // namespace

std::string Port_Judge::judge(const electrodePacket& packet) {
    std::string fault = m_layout == Packet_Layout::own ? judge_own(packet) : judge_host(packet);
    const bool low = std::all_of(std::begin(packet.Status), std::end(packet.Status),
                                 [](auto status) { return status == 0; });
    if (fault.empty() && !low) {
        fault = "a status word is not 0";
    }
    if (!fault.empty()) {
        fault.insert(0, "port " + std::to_string(m_port) + ", packet " + std::to_string(m_packets) + " : ");
    }
    ++m_packets;
    return fault;
}

void Port_Judge::restart() {
    m_packets = 0;
    m_time = 0.0F;
}

// The LFP sample ends before the AP sample of the same super frame, so that the first packet has one AP
// sample less, and every other one begins with the last of the packet before.
std::string Port_Judge::judge_own(const electrodePacket& packet) {
    std::string fault;
    for (std::size_t row = 0; row < rows; ++row) {
        if (m_packets == 0 && row == rows - 1) {
            const bool empty = packet.timestamp[row] == 0 &&
                               std::all_of(std::begin(packet.apData[row]), std::end(packet.apData[row]),
                                           [](auto sample) { return sample == 0; });
            return !fault.empty() ? fault : empty ? judge_lfp(packet, 0) : "its last row is not empty";
        }
        const std::uint64_t number = m_packets * rows + row - (m_packets == 0 ? 0 : 1);
        const auto stamp = static_cast<std::uint32_t>(m_time);
        m_time += own_sample_period;
        if (fault.empty()) {
            fault = judge_row(packet, row, number, stamp);
        }
    }
    return fault.empty() ? judge_lfp(packet, m_packets) : fault;
}

std::string Port_Judge::judge_host(const electrodePacket& packet) const {
    const std::uint64_t first = m_numbers.of_port(m_packets * rows);
    for (std::size_t row = 0; row < rows; ++row) {
        const std::uint64_t number = m_numbers.of_port(m_packets * rows + row);
        std::string fault = judge_row(packet, row, number, static_cast<std::uint32_t>(number * 10 / 3));
        if (!fault.empty()) {
            return fault;
        }
    }
    // While samples are left out an LFP sample is made of what has come.
    const bool is_whole =
        first % rows == 0 && m_numbers.of_port(m_packets * rows + rows - 1) == first + rows - 1;
    return is_whole ? judge_lfp(packet, first / rows) : "";
}

std::string Port_Judge::judge_row(const electrodePacket& packet, std::size_t row, std::uint64_t number,
                                  std::uint32_t stamp) const {
    const Numbered_Samples::Row values(packet.apData[row]);
    const std::string place = "AP row " + std::to_string(row);
    if (!m_samples.is_ap(number, values)) {
        return place + what_it_is(number, values);
    }
    return packet.timestamp[row] == stamp ? ""
                                          : place + " is stamped " + std::to_string(packet.timestamp[row]) +
                                                " instead of " + std::to_string(stamp);
}

std::string Port_Judge::judge_lfp(const electrodePacket& packet, std::uint64_t number) const {
    const Numbered_Samples::Row values(packet.lfpData);
    return m_samples.is_lfp(number, values) ? "" : "LFP row" + what_it_is(number, values);
}

std::string Port_Judge::what_it_is(std::uint64_t number, Numbered_Samples::Row values) const {
    const std::uint64_t found = m_samples.number_in(values);
    return found == number
               ? " has the number of sample " + std::to_string(number) + ", but other values"
               : " has the number " + std::to_string(found) + " instead of " + std::to_string(number);
}

} // namespace Pelgar::ORBE::test
