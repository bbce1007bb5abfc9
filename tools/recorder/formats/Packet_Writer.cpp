#include "formats/Packet_Writer.h"

#include <array>
#include <exception>
#include <limits>
#include <stdexcept>

namespace Pelgar::ORBE::recorder {

namespace {

constexpr std::uint64_t samples_per_packet = NP1_PROBE_SUPERFRAMESIZE;

std::uint64_t end_in(const Recording_Description& description, std::uint64_t samples_per_sample) {
    return description.end_sample ? *description.end_sample / samples_per_sample
                                  : std::numeric_limits<std::uint64_t>::max();
}

} // namespace

Packet_Writer::Packet_Writer(std::unique_ptr<A_Folder_Format> format, const std::filesystem::path& folder,
                             const Recording_Description& description)
    : m_first(description.first_sample), m_format(std::move(format)), m_gaps(folder) {
    const std::uint64_t end = end_in(description, 1);
    for (std::size_t probe = 0; probe < description.probes.size(); ++probe) {
        m_probes.emplace_back(new Probe_Stream{
            Stream_Writer(m_format->make_ap_sink(probe), m_gaps, m_first, end, samples_per_packet - 1),
            Stream_Writer(m_format->make_lfp_sink(probe), m_gaps, m_first / samples_per_packet,
                          end_in(description, samples_per_packet), 0),
            {},
            {}});
    }
    if (description.adc) {
        m_adc.reset(
            new ADC_Stream{Stream_Writer(m_format->make_adc_sink(), m_gaps, m_first, end, 0), {}, {}});
    }
}

std::size_t Packet_Writer::stream_count() const {
    return m_probes.size() + (m_adc ? 1 : 0);
}

const Stream_Writer& Packet_Writer::main_writer(std::size_t stream) const {
    if (stream == m_probes.size() && m_adc) {
        return m_adc->writer;
    }
    return m_probes.at(stream)->ap;
}

void Packet_Writer::write_probe(std::size_t probe, std::span<const Neuropixels::electrodePacket> packets) {
    Probe_Stream& stream = *m_probes.at(probe);
    for (const Neuropixels::electrodePacket& packet : packets) {
        write_packet(stream, packet);
    }
}

// A packet's twelve samples follow each other, but for gaps.
void Packet_Writer::write_packet(Probe_Stream& stream, const Neuropixels::electrodePacket& packet) const {
    std::array<std::uint64_t, samples_per_packet> numbers{};
    for (std::size_t row = 0; row < samples_per_packet; ++row) {
        numbers[row] = stream.numbers.number_of(packet.timestamp[row]);
    }
    for (std::size_t begin = 0; begin < samples_per_packet;) {
        std::size_t end = begin + 1;
        while (end < samples_per_packet && numbers[end] == numbers[end - 1] + 1) {
            ++end;
        }
        stream.ap.write(numbers[begin],
                        {packet.apData[begin], NP1_PROBE_CHANNEL_COUNT, packet.Status + begin, end - begin});
        begin = end;
    }
    // Behind a gap packets begin with any sample; their LFP sample goes to the nearest place.
    if (!stream.phase) {
        stream.phase = numbers.front() % samples_per_packet;
    }
    const std::uint64_t lfp_number =
        (numbers.front() - *stream.phase + samples_per_packet / 2) / samples_per_packet;
    stream.lfp.write(lfp_number, {packet.lfpData, NP1_PROBE_CHANNEL_COUNT, packet.Status, 1});
}

void Packet_Writer::write_adc(std::span<const Neuropixels::PacketInfo> infos,
                              std::span<const std::int16_t> rows) {
    if (!m_adc || rows.size() != infos.size() * adc_row_length) {
        throw std::invalid_argument("packets of the ADC inputs that do not fit the recording");
    }
    ADC_Stream& stream = *m_adc;
    stream.status.clear();
    std::uint64_t first = 0;
    std::size_t begin = 0;
    const auto write_run = [&](std::size_t end) {
        if (begin < end) {
            stream.writer.write(first, {rows.data() + begin * adc_row_length, adc_row_length,
                                        stream.status.data() + begin, end - begin});
        }
    };
    for (const Neuropixels::PacketInfo& info : infos) {
        stream.status.push_back(info.Status);
    }
    for (std::size_t row = 0; row < infos.size(); ++row) {
        const std::uint64_t number = stream.numbers.number_of(infos[row].Timestamp);
        if (row == 0) {
            first = number;
        } else if (number != first + (row - begin)) {
            write_run(row);
            first = number;
            begin = row;
        }
    }
    write_run(infos.size());
}

// A stream that the disk does not take keeps no other from being finished.
void Packet_Writer::finish() {
    std::exception_ptr first_failure;
    const auto try_to = [&first_failure](const auto& work) {
        try {
            work();
        } catch (...) {
            first_failure = first_failure ? first_failure : std::current_exception();
        }
    };
    for (const auto& probe : m_probes) {
        try_to([&] { probe->ap.finish(); });
        try_to([&] { probe->lfp.finish(); });
    }
    if (m_adc) {
        try_to([&] { m_adc->writer.finish(); });
    }
    try_to([&] { m_gaps.finish(); });
    if (first_failure) {
        std::rethrow_exception(first_failure);
    }
}

std::uint64_t Packet_Writer::bytes_written() const {
    std::uint64_t bytes = m_gaps.size();
    for (const auto& probe : m_probes) {
        bytes += probe->ap.bytes() + probe->lfp.bytes();
    }
    return bytes + (m_adc ? m_adc->writer.bytes() : 0);
}

} // namespace Pelgar::ORBE::recorder
