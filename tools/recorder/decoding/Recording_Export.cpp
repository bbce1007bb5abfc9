#include "decoding/Recording_Export.h"

#include "decoding/Raw_Decoder.h"
#include "decoding/Stream_Drain.h"
#include "description/Whole_File.h"
#include "wire/Mux_Row_Format.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <fstream>
#include <limits>
#include <memory>
#include <stdexcept>

namespace Pelgar::ORBE::recorder {

namespace {

// Decoded between two waits, which cost a change of threads for every stream. With an end in sight it is
// less, so that the end is not overrun by much.
constexpr std::size_t pieces_at_once = 64;
constexpr std::size_t pieces_at_once_before_end = 8;
// So much of a queue may be full before more is decoded.
constexpr std::size_t packets_left = Raw_Decoder::probe_queue_length / 2;
constexpr std::size_t adc_packets_left = Raw_Decoder::adc_queue_length / 2;

// Reads the file in big pieces.
class Raw_File {
public:
    explicit Raw_File(std::filesystem::path path)
        : m_path(std::move(path)), m_bytes(Raw_Decoder::piece_bytes) {
        errno = 0;
        m_file.pubsetbuf(nullptr, 0);
        if (m_file.open(m_path, std::ios::in | std::ios::binary) == nullptr) {
            throw file_error(m_path, "cannot read");
        }
    }

    // Valid until the next call; shorter only at the end of the file, where the last whole row counts.
    std::span<const std::uint8_t> next() {
        errno = 0;
        const auto read = m_file.sgetn(reinterpret_cast<char*>(m_bytes.data()),
                                       static_cast<std::streamsize>(m_bytes.size()));
        if (read < 0 || (read == 0 && errno != 0)) {
            throw file_error(m_path, "cannot read");
        }
        const auto size = static_cast<std::size_t>(read);
        return {m_bytes.data(), size - size % demux::mux_row::length};
    }

private:
    std::filesystem::path m_path;
    std::filebuf m_file;
    std::vector<std::uint8_t> m_bytes;
};

Stream_Drain::Stream probe_drain(npoe_adapter::Electrode_Stream& stream, A_Recording_Writer& writer,
                                 std::size_t probe) {
    auto packets = std::make_shared<std::vector<Neuropixels::electrodePacket>>(Stream_Drain::at_once);
    return {[&stream] { return stream.available(); },
            [&stream, packets](std::size_t most) { return stream.take(packets->data(), most); },
            [&writer, packets, probe](std::size_t taken) {
                writer.write_probe(probe, {packets->data(), taken});
            }};
}

Stream_Drain::Stream adc_drain(npoe_adapter::ADC_Stream& stream, A_Recording_Writer& writer) {
    struct Packets {
        std::array<Neuropixels::PacketInfo, Stream_Drain::at_once> infos;
        std::array<std::int16_t, Stream_Drain::at_once * adc_row_length> rows;
    };

    auto packets = std::make_shared<Packets>();
    return {
        [&stream] { return stream.available(); },
        [&stream, packets](std::size_t most) {
            return stream.take(packets->infos.data(), packets->rows.data(), adc_row_length, most);
        },
        [&writer, packets](std::size_t taken) {
            writer.write_adc({packets->infos.data(), taken}, {packets->rows.data(), taken * adc_row_length});
        }};
}

bool is_complete(const A_Recording_Writer& writer, const Recording_Description& description) {
    if (!description.end_sample) {
        return false;
    }
    const std::uint64_t wanted = *description.end_sample - description.first_sample;
    for (std::size_t stream = 0; stream < writer.stream_count(); ++stream) {
        if (writer.samples(stream) < wanted) {
            return false;
        }
    }
    return true;
}

// Up to the end of the recording, or as far as is wanted.
bool write_packets(const Export_Source& source, A_Recording_Writer& writer,
                   const std::function<bool(std::uint64_t)>& goes_on) {
    Raw_File file(source.raw);
    Raw_Decoder decoder(source.description, source.gain_files);
    std::vector<std::unique_ptr<Stream_Drain>> drains;
    for (std::size_t probe = 0; probe < source.description.probes.size(); ++probe) {
        drains.push_back(
            std::make_unique<Stream_Drain>(probe_drain(decoder.probe_stream(probe), writer, probe)));
    }
    if (source.description.adc) {
        drains.push_back(std::make_unique<Stream_Drain>(adc_drain(decoder.adc_stream(), writer)));
    }
    const bool has_end = source.description.end_sample.has_value();
    const std::size_t most_pieces = has_end ? pieces_at_once_before_end : pieces_at_once;
    const auto left = [&](std::size_t drain) {
        if (has_end) {
            return std::size_t{0};
        }
        return drain < source.description.probes.size() ? packets_left : adc_packets_left;
    };

    std::uint64_t bytes = 0;
    bool is_wanted = true;
    auto piece = file.next();
    while (!piece.empty() && is_wanted && !is_complete(writer, source.description)) {
        for (std::size_t pieces = 0; pieces < most_pieces && !piece.empty() && !decoder.is_enough();
             ++pieces) {
            bytes += piece.size();
            decoder.decode(piece);
            piece = file.next();
        }
        decoder.wait();
        for (std::size_t drain = 0; drain < drains.size(); ++drain) {
            drains[drain]->move_on();
            drains[drain]->wait_until_left(left(drain));
        }
        is_wanted = goes_on(bytes);
    }
    for (const auto& drain : drains) {
        drain->let_all_through();
    }
    for (const auto& drain : drains) {
        drain->wait_until_left(0);
    }
    return is_wanted;
}

} // namespace

bool export_recording(const Export_Source& source, A_Recording_Writer& writer,
                      const std::function<bool(std::uint64_t)>& goes_on) {
    bool is_wanted = false;
    try {
        is_wanted = write_packets(source, writer, goes_on);
    } catch (...) {
        const std::exception_ptr failure = std::current_exception();
        try {
            writer.finish();
        } catch (const std::exception&) {
            // What has stopped the export is told, and it stops the end as well.
        }
        std::rethrow_exception(failure);
    }
    writer.finish();
    return is_wanted;
}

Raw_Content raw_content(const std::filesystem::path& raw) {
    std::array<bool, demux::np_port_count> has_port{};
    Raw_Content content;
    Raw_File file(raw);
    for (auto rows = file.next(); !rows.empty(); rows = rows.subspan(demux::mux_row::length)) {
        const unsigned stream = rows[demux::mux_row::marker_offset] & demux::mux_row::stream_id_mask;
        if (!demux::mux_row::has_marker(rows.data())) {
            continue;
        }
        if (stream < has_port.size()) {
            has_port[stream] = true;
        }
        content.has_adc = content.has_adc || stream == demux::mux_row::rhd_stream_id;
    }
    for (std::size_t port = 0; port < has_port.size(); ++port) {
        if (has_port[port]) {
            content.ports.push_back(static_cast<int>(port) + 1);
        }
    }
    if (content.ports.empty() && !content.has_adc) {
        throw std::runtime_error("'" + raw.string() + "' is no recording of this box");
    }
    return content;
}

} // namespace Pelgar::ORBE::recorder
