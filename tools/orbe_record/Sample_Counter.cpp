#include "Sample_Counter.h"

namespace Pelgar::ORBE::recorder {

namespace {

// A probe's packets begin with the first whole one.
constexpr std::uint64_t free_head = NP1_PROBE_SUPERFRAMESIZE - 1;

} // namespace

Sample_Counter::Sample_Counter(const Recording_Description& description)
    : m_first_sample(description.first_sample), m_probe_count(description.probes.size()) {
    for (std::size_t stream = 0; stream < m_probe_count + (description.adc ? 1 : 0); ++stream) {
        m_streams.push_back(std::make_unique<Counted_Stream>());
    }
}

std::string Sample_Counter::stream_name(std::size_t stream) const {
    return stream < m_probe_count ? "probe " + std::to_string(stream + 1) : "ADC";
}

void Sample_Counter::write_probe(std::size_t probe, std::span<const Neuropixels::electrodePacket> packets) {
    for (const Neuropixels::electrodePacket& packet : packets) {
        for (std::size_t row = 0; row < NP1_PROBE_SUPERFRAMESIZE; ++row) {
            count(*m_streams.at(probe), packet.timestamp[row]);
        }
    }
}

void Sample_Counter::write_adc(std::span<const Neuropixels::PacketInfo> infos,
                               std::span<const std::int16_t> /*rows*/) {
    for (const Neuropixels::PacketInfo& info : infos) {
        count(*m_streams.at(m_probe_count), info.Timestamp);
    }
}

void Sample_Counter::count(Counted_Stream& stream, std::uint32_t stamp) const {
    const std::uint64_t number = stream.numbers.number_of(stamp);
    if (number < m_first_sample) {
        return;
    }
    const std::uint64_t place = number - m_first_sample;
    const std::uint64_t missing = place - stream.samples;
    if (stream.samples != 0 || missing > free_head) {
        stream.lost += missing;
    }
    stream.samples = place + 1;
}

} // namespace Pelgar::ORBE::recorder
