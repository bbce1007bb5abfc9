#include "checker/Recording_Checker.h"

namespace Pelgar::ORBE::recording {

namespace {

std::uint64_t plausible_rows(std::span<const std::uint8_t> bytes) {
    std::uint64_t count = 0;
    for (std::size_t at = 0; at + row_bytes <= bytes.size(); at += row_bytes) {
        const Row_View row(bytes.data() + at);
        count += row.has_marker() && row.stream() < first_unknown_stream ? 1U : 0U;
    }
    return count;
}

} // namespace

void Recording_Checker::look_at_piece(std::span<const std::uint8_t> piece) {
    look_at_rows(piece);
    m_packets.add_piece(piece);
}

void Recording_Checker::look_at_rest(std::span<const std::uint8_t> rest) {
    look_at_rows(rest);
    m_report.bytes_never_pushed = rest.size();
    m_report.odd_bytes = rest.size() % row_bytes;
}

Check_Report Recording_Checker::report() const {
    Check_Report report = m_report;
    for (unsigned port = 0; port < port_count; ++port) {
        report.ports[port] = m_ports[port].findings();
        report.ports[port].packets = m_packets.of_port(port + 1);
    }
    report.rhd = m_rhd.findings();
    report.rhd.packets = m_packets.of_adc();
    return report;
}

void Recording_Checker::look_at_rows(std::span<const std::uint8_t> bytes) {
    std::uint64_t number = m_report.rows;
    m_report.bytes += bytes.size();
    m_report.rows += bytes.size() / row_bytes;
    m_report.plausible_rows += plausible_rows(bytes);
    const std::size_t given_up = for_each_row(bytes, [&](Row_View row) {
        const unsigned stream = row.stream();
        if (stream < port_count) {
            m_ports[stream].look_at(row, number);
        } else if (stream == rhd_stream) {
            m_rhd.look_at(row, number);
        } else {
            m_unknown[stream].follows(row, number, m_report.unknown[stream]);
            m_report.unknown[stream].found.note(number);
        }
        ++number;
    });
    if (given_up != 0) {
        m_report.bad_markers.note(number);
        m_report.given_up_rows += given_up;
    }
}

} // namespace Pelgar::ORBE::recording
