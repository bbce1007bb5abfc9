#include "Made_Streams.h"

#include "formats/A_Recording_Writer.h"

namespace Pelgar::ORBE::test {

namespace {

// Any mixture in which neighbours differ.
std::uint32_t mixed(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
    std::uint64_t value = a * 0x9E3779B97F4A7C15U + b * 0xC2B2AE3D27D4EB4FU + c * 0x165667B19E3779F9U + 1;
    value ^= value >> 29U;
    value *= 0xBF58476D1CE4E5B9U;
    return static_cast<std::uint32_t>(value >> 32U);
}

// Never 0, which is what stands for a lost sample.
std::int16_t ten_bits(std::uint32_t value) {
    const auto number = static_cast<std::int16_t>(static_cast<int>(value % 1023) - 511);
    return number == 0 ? std::int16_t{511} : number;
}

} // namespace

std::int16_t ap_value(int port, int channel, std::uint64_t sample) {
    return ten_bits(mixed(static_cast<std::uint64_t>(port), static_cast<std::uint64_t>(channel), sample));
}

std::int16_t lfp_value(int port, int channel, std::uint64_t lfp_sample) {
    return ten_bits(
        mixed(static_cast<std::uint64_t>(port) + 8, static_cast<std::uint64_t>(channel), lfp_sample));
}

std::int16_t adc_value(int input, std::uint64_t sample) {
    const auto value =
        static_cast<std::int16_t>(mixed(16, static_cast<std::uint64_t>(input), sample) & 0xFFFFU);
    return value == 0 ? std::int16_t{1} : value;
}

bool sync_level(std::uint64_t sample) {
    return sample % 1000 < 700;
}

bool comparator_level(int input, std::uint64_t sample) {
    return (sample / 500 + static_cast<std::uint64_t>(input)) % 3 == 0;
}

std::uint32_t stamp_of_sample(std::uint64_t sample) {
    return static_cast<std::uint32_t>(sample * 10 / 3);
}

Neuropixels::electrodePacket made_packet(int port, const std::vector<std::uint64_t>& samples) {
    Neuropixels::electrodePacket packet{};
    for (std::size_t row = 0; row < NP1_PROBE_SUPERFRAMESIZE; ++row) {
        const std::uint64_t sample = samples.at(row);
        packet.timestamp[row] = stamp_of_sample(sample);
        packet.Status[row] = sync_level(sample) ? ELECTRODEPACKET_STATUS_SYNC : 0;
        for (int channel = 0; channel < NP1_PROBE_CHANNEL_COUNT; ++channel) {
            packet.apData[row][channel] = ap_value(port, channel, sample);
        }
    }
    for (int channel = 0; channel < NP1_PROBE_CHANNEL_COUNT; ++channel) {
        packet.lfpData[channel] = lfp_value(port, channel, samples.front() / NP1_PROBE_SUPERFRAMESIZE);
    }
    return packet;
}

void add_adc_packet(Made_ADC_Packets& packets, std::uint64_t sample) {
    const std::uint16_t status = sync_level(sample) ? ELECTRODEPACKET_STATUS_SYNC : 0;
    packets.infos.push_back({stamp_of_sample(sample), status, recorder::adc_row_length});
    constexpr int inputs = 12;
    for (int input = 0; input < inputs; ++input) {
        packets.rows.push_back(adc_value(input, sample));
    }
    for (int input = 0; input < inputs; ++input) {
        packets.rows.push_back(comparator_level(input, sample) ? 1 : 0);
    }
}

} // namespace Pelgar::ORBE::test
