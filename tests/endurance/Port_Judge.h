// Endurance test. Holds each packet of a port against the samples that were put in. One thread.
#pragma once

#include "Numbered_Samples.h"
#include "Packet_Layout.h"
#include "Sample_Numbers.h"

#include "signals/A_Signal.h"
#include <NeuropixAPI.h>

#include <cstdint>
#include <string>

namespace Pelgar::ORBE::test {

class Port_Judge {
public:
    Port_Judge(Packet_Layout layout, std::uint64_t seed, unsigned port, const Sample_Numbers& numbers)
        : m_layout(layout), m_port(port), m_numbers(numbers),
          m_samples(seed, port, layout == Packet_Layout::host ? recording::sample_middle : 0) {}

    // What is wrong with the next packet; empty when nothing is.
    std::string judge(const Neuropixels::electrodePacket& packet);

    // The stream begins anew with sample 0.
    void restart();

    std::uint64_t packets() const { return m_packets; }

private:
    std::string judge_own(const Neuropixels::electrodePacket& packet);
    std::string judge_host(const Neuropixels::electrodePacket& packet) const;
    std::string judge_row(const Neuropixels::electrodePacket& packet, std::size_t row, std::uint64_t number,
                          std::uint32_t stamp) const;
    std::string what_it_is(std::uint64_t number, Numbered_Samples::Row values) const;
    std::string judge_lfp(const Neuropixels::electrodePacket& packet, std::uint64_t number) const;

    Packet_Layout m_layout;
    unsigned m_port;
    Sample_Numbers m_numbers;
    Numbered_Samples m_samples;
    std::uint64_t m_packets = 0;
    float m_time = 0.0F; // of the box's own mode: what it adds up, with its rounding
};

} // namespace Pelgar::ORBE::test
