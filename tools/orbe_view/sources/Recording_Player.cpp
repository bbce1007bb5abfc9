#include "sources/Recording_Player.h"

#include "stream_format/Wire_Format.h"

#include <stdexcept>

namespace Pelgar::ORBE::view {

namespace {

constexpr std::size_t packets_at_once = 256;
constexpr std::size_t adc_packets_at_once = 1536;

} // namespace

Recording_Player::Recording_Player(const std::filesystem::path& file,
                                   const recorder::Recording_Description& description, Histories& histories,
                                   std::size_t piece, const Recording_Index::Piece& place)
    : m_path(file), m_file(file, std::ios::binary), m_histories(histories), m_piece(piece),
      m_bytes(recording::piece_bytes),
      m_decoder(description, std::vector<std::optional<std::filesystem::path>>(description.probes.size())),
      m_adc_intake(place.first[port_count] ? place.first[port_count]->number : place.sample),
      m_packets(packets_at_once), m_infos(adc_packets_at_once),
      m_rows(adc_packets_at_once * Packet_Intake::adc_row_length) {
    m_file.seekg(static_cast<std::streamoff>(piece) * static_cast<std::streamoff>(recording::piece_bytes));
    if (!m_file) {
        throw std::runtime_error("cannot read '" + file.string() + "'");
    }
    for (const recorder::Probe_Description& probe : description.probes) {
        const auto& first = place.first[static_cast<std::size_t>(probe.port) - 1];
        m_intakes.emplace_back(first ? first->number : place.sample);
    }
}

bool Recording_Player::decode_piece(bool is_last) {
    const bool goes_on = m_shown_of_rest != 0;
    const std::size_t piece = goes_on ? m_piece - 1 : m_piece;
    const std::size_t wanted = m_bytes.size() - m_shown_of_rest;
    m_file.clear();
    m_file.seekg(static_cast<std::streamoff>(piece) * static_cast<std::streamoff>(recording::piece_bytes) +
                 static_cast<std::streamoff>(m_shown_of_rest));
    m_file.read(reinterpret_cast<char*>(m_bytes.data()), static_cast<std::streamsize>(wanted));
    const auto read = static_cast<std::size_t>(m_file.gcount());
    if (m_file.bad()) {
        throw std::runtime_error("cannot read '" + m_path.string() + "' any further");
    }
    const std::size_t whole_rows = read - read % recording::row_bytes;
    if (whole_rows == 0 || (read != wanted && !is_last)) {
        return false;
    }
    m_piece = piece + 1;
    m_shown_of_rest = read == wanted ? 0 : m_shown_of_rest + whole_rows;
    m_decoder.decode(std::span<const std::uint8_t>(m_bytes).first(whole_rows));
    m_decoder.wait();
    take();
    return true;
}

void Recording_Player::take() {
    for (std::size_t probe = 0; probe < m_intakes.size(); ++probe) {
        auto& stream = m_decoder.probe_stream(probe);
        while (const std::size_t count = stream.take(m_packets.data(), m_packets.size())) {
            m_intakes[probe].take(m_histories.probe(probe), std::span(m_packets).first(count));
        }
    }
    auto& stream = m_decoder.adc_stream();
    while (const std::size_t count =
               stream.take(m_infos.data(), m_rows.data(), Packet_Intake::adc_row_length, m_infos.size())) {
        if (m_histories.adc() != nullptr) {
            m_adc_intake.take(*m_histories.adc(), std::span(m_infos).first(count),
                              std::span(m_rows).first(count * Packet_Intake::adc_row_length));
        }
    }
}

} // namespace Pelgar::ORBE::view
