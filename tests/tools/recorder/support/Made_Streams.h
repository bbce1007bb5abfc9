// Test support: packets of the host mode whose every value follows from port, channel and sample.
#pragma once

#include "NeuropixAPI.h"

#include <cstdint>
#include <vector>

namespace Pelgar::ORBE::test {

std::int16_t ap_value(int port, int channel, std::uint64_t sample);
std::int16_t lfp_value(int port, int channel, std::uint64_t lfp_sample);
std::int16_t adc_value(int input, std::uint64_t sample);
// High for the first 700 of every 1000 samples.
bool sync_level(std::uint64_t sample);
// Of comparator `input`.
bool comparator_level(int input, std::uint64_t sample);

std::uint32_t stamp_of_sample(std::uint64_t sample);

// A packet of these twelve samples; its LFP sample is the one of the first.
Neuropixels::electrodePacket made_packet(int port, const std::vector<std::uint64_t>& samples);

// Packets of the samples from `begin` up to `end`, without those that `is_lost` names and without an
// unfinished packet.
template <typename Is_Lost>
std::vector<Neuropixels::electrodePacket> made_packets(int port, std::uint64_t begin, std::uint64_t end,
                                                       Is_Lost is_lost) {
    std::vector<Neuropixels::electrodePacket> packets;
    std::vector<std::uint64_t> samples;
    for (std::uint64_t sample = begin; sample < end; ++sample) {
        if (is_lost(sample)) {
            continue;
        }
        samples.push_back(sample);
        if (samples.size() == NP1_PROBE_SUPERFRAMESIZE) {
            packets.push_back(made_packet(port, samples));
            samples.clear();
        }
    }
    return packets;
}

struct Made_ADC_Packets {
    std::vector<Neuropixels::PacketInfo> infos;
    std::vector<std::int16_t> rows;
};

void add_adc_packet(Made_ADC_Packets& packets, std::uint64_t sample);

} // namespace Pelgar::ORBE::test
