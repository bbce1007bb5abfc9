#include "Packet_Difference.h"

#include <cstring>

namespace Pelgar::ORBE::recording {

namespace {

template <typename Value>
std::string describe(const std::string& what, Value received, Value expected) {
    return what + " is " + std::to_string(received) + " instead of " + std::to_string(expected);
}

} // namespace

// Packets have no padding, so that equal memory is the same as equal packets.
static_assert(sizeof(Neuropixels::electrodePacket) ==
              slots_per_sample * (sizeof(std::uint32_t) + sizeof(std::uint16_t)) +
                  (slots_per_sample + 1) * channel_count * sizeof(std::int16_t));

std::string difference_of(const Neuropixels::electrodePacket& received,
                          const Neuropixels::electrodePacket& expected) {
    if (std::memcmp(&received, &expected, sizeof(expected)) == 0) {
        return {};
    }
    for (std::size_t row = 0; row < slots_per_sample; ++row) {
        const std::string where = " " + std::to_string(row);
        if (received.timestamp[row] != expected.timestamp[row]) {
            return describe("time stamp" + where, received.timestamp[row], expected.timestamp[row]);
        }
        if (received.Status[row] != expected.Status[row]) {
            return describe("status" + where, received.Status[row], expected.Status[row]);
        }
        for (std::size_t channel = 0; channel < channel_count; ++channel) {
            if (received.apData[row][channel] != expected.apData[row][channel]) {
                return describe("AP sample" + where + " of channel " + std::to_string(channel),
                                received.apData[row][channel], expected.apData[row][channel]);
            }
        }
    }
    std::size_t channel = 0;
    while (received.lfpData[channel] == expected.lfpData[channel]) {
        ++channel;
    }
    return describe("LFP sample of channel " + std::to_string(channel), received.lfpData[channel],
                    expected.lfpData[channel]);
}

std::string difference_of(const Neuropixels::PacketInfo& info, std::span<const std::int16_t> samples,
                          const ADC_Packet& expected) {
    if (info.Status != expected.status) {
        return describe("status", info.Status, expected.status);
    }
    if (info.Timestamp != 0) {
        return describe("time stamp", info.Timestamp, 0U);
    }
    if (info.payloadlength != 0) {
        return describe("payload length", info.payloadlength, std::uint16_t{0});
    }
    for (std::size_t i = 0; i < expected.samples.size(); ++i) {
        if (samples[i] != expected.samples[i]) {
            return describe("value " + std::to_string(i), samples[i], expected.samples[i]);
        }
    }
    return {};
}

} // namespace Pelgar::ORBE::recording
