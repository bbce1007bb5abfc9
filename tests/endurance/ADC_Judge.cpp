#include "ADC_Judge.h"

#include <algorithm>

namespace Pelgar::ORBE::test {

namespace {

using Neuropixels::PacketInfo;

constexpr std::size_t inputs = Numbered_Inputs::input_count;
constexpr std::size_t columns_of_inputs = ADC_Judge::own_row_length;

// Offset binary to two's complement.
std::int16_t sample_of(std::uint16_t word) {
    return static_cast<std::int16_t>(word + 0x8000U);
}

std::uint64_t frame_in(std::span<const std::int16_t> row) {
    std::uint64_t frame = 0;
    for (std::size_t input = 4; input-- > 0;) {
        frame = (frame << 16U) | static_cast<std::uint16_t>(row[input] + 0x8000);
    }
    return frame;
}

} // namespace

std::string ADC_Judge::judge(const PacketInfo& info, std::span<const std::int16_t> row) {
    std::string fault;
    if (m_begins) {
        fault = find_first(frame_in(row));
    }
    const std::uint64_t frame = m_numbers.of_adc(m_tick);
    if (fault.empty()) {
        fault = judge_inputs(frame, row);
    }
    if (fault.empty()) {
        fault = m_layout == Packet_Layout::own ? judge_own(frame, info) : judge_host(frame, info, row);
    }
    if (!fault.empty()) {
        fault.insert(0, "ADC inputs, packet " + std::to_string(m_packets) + " : ");
    }
    m_begins = false;
    ++m_tick;
    ++m_packets;
    return fault;
}

std::string ADC_Judge::find_first(std::uint64_t frame) {
    const std::uint64_t tick = frame == 0 ? 0 : m_numbers.adc_tick(frame);
    if (frame != 0 && tick < m_tick) {
        return "frame " + std::to_string(frame) + " comes once more";
    }
    m_tick = tick;
    m_first_frame = frame;
    // What lay between is not known, and changes of the inputs in it show in this packet.
    m_last_ttl = m_inputs.ttl(frame);
    return "";
}

std::string ADC_Judge::judge_inputs(std::uint64_t frame, std::span<const std::int16_t> row) const {
    for (std::size_t input = 0; input < inputs; ++input) {
        if (row[input] != sample_of(m_inputs.word(frame, input))) {
            return "input " + std::to_string(input) + " is not that of frame " + std::to_string(frame) +
                   ", the inputs say " + std::to_string(frame_in(row));
        }
    }
    const auto others = row.subspan(inputs, columns_of_inputs - inputs);
    return std::all_of(others.begin(), others.end(), [](auto sample) { return sample == 0; })
               ? ""
               : "an input that the box does not have is not 0";
}

std::string ADC_Judge::judge_own(std::uint64_t frame, const PacketInfo& info) {
    const std::uint32_t ttl = m_inputs.ttl(frame);
    const bool changed = ttl != m_last_ttl;
    m_last_ttl = ttl;
    const auto status = static_cast<std::uint16_t>((((ttl >> 8U) & 0xFFFEU) | (changed ? 1U : 0U)) << 6U);
    // The first one after a start may tell of a change that nobody was there to read.
    const std::uint16_t ignored = m_begins ? 1U << 6U : 0U;
    if (((info.Status ^ status) & ~unsigned{ignored}) != 0) {
        return "status is " + std::to_string(info.Status) + " instead of " + std::to_string(status);
    }
    return info.Timestamp == 0 ? "" : "it has a stamp";
}

std::string ADC_Judge::judge_host(std::uint64_t frame, const PacketInfo& info,
                                  std::span<const std::int16_t> row) {
    const auto stamp = static_cast<std::uint32_t>((frame - m_first_frame) * 10 / 3);
    if (info.Timestamp != stamp) {
        return "it is stamped " + std::to_string(info.Timestamp) + " instead of " + std::to_string(stamp);
    }
    if (info.Status != 0 || info.payloadlength != host_row_length) {
        return "its status or its length is wrong";
    }
    for (std::size_t input = 0; input < inputs; ++input) {
        const std::uint32_t bit = 1U << input;
        if (row[input] != 0) {
            m_comparators = row[input] > 0 ? m_comparators | bit : m_comparators & ~bit;
        }
    }
    // Those of the inputs that the box does not have show the first TTL inputs.
    const std::uint32_t comparators = m_comparators | (m_inputs.ttl(frame) & 0x0F00U);
    for (std::size_t i = 0; i < columns_of_inputs; ++i) {
        if (row[columns_of_inputs + i] != static_cast<std::int16_t>((comparators >> i) & 1U)) {
            return "comparator " + std::to_string(i) + " is wrong";
        }
    }
    return "";
}

} // namespace Pelgar::ORBE::test
