#include "ADC_Reader.h"

#include "ADC_Expectation.h"
#include "Packet_Difference.h"

#include <NeuropixAPI.h>

#include <exception>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::recording {

namespace {

constexpr int slot = 0;
constexpr int adc_channels = 12;
// Packets asked for at once. The library keeps 501, and a piece of the stream brings hundreds.
constexpr std::size_t batch_packets = 64;

} // namespace

ADC_Reader::ADC_Reader(std::filesystem::path recording, bool verify)
    : m_recording(std::move(recording)), m_verify(verify) {}

void ADC_Reader::run() {
    try {
        read_all();
    } catch (const std::exception& error) {
        m_result.error = error.what();
    }
    m_result.ended = true;
}

void ADC_Reader::read_all() {
    ADC_Expectation expectation{Piece_Reader(m_recording)};
    std::vector<ADC_Packet> expected(batch_packets);
    std::vector<Neuropixels::PacketInfo> infos(batch_packets);
    std::vector<std::int16_t> samples(batch_packets * adc_channels);
    while (true) {
        std::size_t known = 0;
        while (known < batch_packets) {
            const ADC_Packet* const packet = expectation.next();
            if (packet == nullptr) {
                break;
            }
            expected[known++] = *packet;
        }
        m_result.expected += known;
        m_result.bytes = expectation.bytes_read();
        // After the last packet one more is asked for, which must not come.
        const bool last = known == 0;
        m_result.complete = last;
        m_result.ended = last;

        int count = 0;
        Neuropixels::ADC_readPackets(slot, infos.data(), samples.data(), adc_channels,
                                     last ? 1 : static_cast<int>(known), &count);
        if (last) {
            m_result.surplus = count != 0;
            return;
        }
        for (std::size_t i = 0; m_verify && i < static_cast<std::size_t>(count); ++i) {
            const std::span<const std::int16_t> values(samples.data() + i * adc_channels, adc_channels);
            const std::string difference = difference_of(infos[i], values, expected[i]);
            if (difference.empty()) {
                ++m_result.equal;
            } else if (m_result.first_difference.empty()) {
                m_result.first_difference =
                    "packet " + std::to_string(m_result.received + i) + ": " + difference;
            }
        }
        m_result.received += static_cast<std::uint64_t>(count);
        if (static_cast<std::size_t>(count) < known) {
            return;
        }
    }
}

} // namespace Pelgar::ORBE::recording
