// Endurance test. Holds each packet of the ADC inputs against what was put in. One thread.
#pragma once

#include "Numbered_Inputs.h"
#include "Packet_Layout.h"
#include "Sample_Numbers.h"

#include <NeuropixAPI.h>

#include <cstdint>
#include <span>
#include <string>

namespace Pelgar::ORBE::test {

class ADC_Judge {
public:
    ADC_Judge(Packet_Layout layout, std::uint64_t seed, const Sample_Numbers& numbers)
        : m_layout(layout), m_numbers(numbers), m_inputs(seed) {}

    // What a row of the host mode holds: twelve inputs, of which the box has eight, and twelve comparators,
    // whose thresholds must have been set to 0 V. The box's own rows end with the inputs.
    static constexpr int host_row_length = 24;
    static constexpr int own_row_length = 12;

    int row_length() const { return m_layout == Packet_Layout::host ? host_row_length : own_row_length; }

    // What is wrong with the next packet; empty when nothing is.
    std::string judge(const Neuropixels::PacketInfo& info, std::span<const std::int16_t> row);

    // The stream begins anew, with any frame that has not been there or with frame 0 again.
    void restart() { m_begins = true; }

    std::uint64_t packets() const { return m_packets; }

private:
    std::string find_first(std::uint64_t frame);
    std::string judge_inputs(std::uint64_t frame, std::span<const std::int16_t> row) const;
    std::string judge_own(std::uint64_t frame, const Neuropixels::PacketInfo& info);
    std::string judge_host(std::uint64_t frame, const Neuropixels::PacketInfo& info,
                           std::span<const std::int16_t> row);

    Packet_Layout m_layout;
    Sample_Numbers m_numbers;
    Numbered_Inputs m_inputs;
    std::uint64_t m_packets = 0;
    bool m_begins = false;
    std::uint64_t m_tick = 0;        // of the next packet
    std::uint64_t m_first_frame = 0; // of this time of streaming
    std::uint32_t m_last_ttl = 0;
    std::uint32_t m_comparators = 0;
};

} // namespace Pelgar::ORBE::test
