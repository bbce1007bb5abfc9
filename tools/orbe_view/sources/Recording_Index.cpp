#include "sources/Recording_Index.h"

#include "stream_format/Wire_Format.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <fstream>

namespace Pelgar::ORBE::view {

namespace {

using namespace recording;

constexpr auto between_looks = std::chrono::milliseconds(20);

std::uint32_t step(std::uint64_t before, std::uint64_t after) {
    return static_cast<std::uint32_t>(after - before);
}

std::uint32_t step(const Finding& before, const Finding& after) {
    return step(before.count(), after.count());
}

std::uint32_t others(const Check_Report& report) {
    std::uint64_t count = report.bad_markers.count() + report.unknown_rows() + report.rhd.cut_frames.count() +
                          report.rhd.bad_preambles.count();
    for (const Port_Findings& port : report.ports) {
        count += port.missing_flags.count();
    }
    return static_cast<std::uint32_t>(count);
}

} // namespace

Damage_Counts Recording_Index::Piece::damage() const {
    Damage_Counts counts;
    for (const std::uint32_t gaps : row_gaps) {
        counts.row_gaps += gaps;
    }
    for (std::size_t port = 0; port < frame_gaps.size(); ++port) {
        counts.frame_gaps += frame_gaps[port];
        counts.wrong_tags += wrong_tags[port];
    }
    counts.others = others;
    return counts;
}

Recording_Index::Recording_Index(std::filesystem::path file, bool grows)
    : m_file(std::move(file)), m_grows(grows), m_thread(&Recording_Index::run, this) {}

Recording_Index::~Recording_Index() {
    m_stops = true;
    m_thread.join();
}

void Recording_Index::run() {
    try {
        read();
    } catch (const std::exception& error) {
        const std::lock_guard lock(m_mutex);
        m_problem = error.what();
    }
    m_is_complete = true;
}

void Recording_Index::read() {
    std::ifstream file(m_file, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read '" + m_file.string() + "'");
    }
    std::vector<std::uint8_t> piece(piece_bytes);
    std::size_t filled = 0;
    while (!m_stops) {
        m_bytes = std::max<std::uint64_t>(std::filesystem::file_size(m_file), m_bytes_read);
        file.clear();
        file.read(reinterpret_cast<char*>(piece.data() + filled),
                  static_cast<std::streamsize>(piece.size() - filled));
        filled += static_cast<std::size_t>(file.gcount());
        if (filled == piece.size()) {
            add(piece);
            filled = 0;
        } else if (file.bad()) {
            throw std::runtime_error("cannot read '" + m_file.string() + "' any further");
        } else if (m_grows) {
            std::this_thread::sleep_for(between_looks);
        } else {
            add(std::span(piece).first(filled - filled % row_bytes));
            return;
        }
    }
}

// The last piece may be shorter.
void Recording_Index::add(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) {
        return;
    }
    if (bytes.size() == piece_bytes) {
        m_checker.look_at_piece(bytes);
    } else {
        m_checker.look_at_rest(bytes);
    }
    const Check_Report report = m_checker.report();
    Piece piece = difference(m_report, report);
    piece.first = m_finder.find(bytes);
    m_report = report;
    m_bytes_read += bytes.size();

    const std::lock_guard lock(m_mutex);
    piece.sample = m_length;
    bool has_probe = false;
    std::uint64_t length = 0;
    for (std::size_t port = 0; port < port_count; ++port) {
        if (piece.first[port]) {
            const auto [first, end] = *piece.first[port];
            piece.sample = has_probe ? std::max(piece.sample, first) : first;
            has_probe = true;
            length = std::max(length, end);
        }
    }
    // The probes' own counters say more than what has come: lost rows are time as well.
    piece.sample = std::max(piece.sample, m_pieces.empty() ? 0 : m_pieces.back().sample);
    const std::uint64_t frames = piece.samples[port_count];
    m_length = std::max({m_length, length, has_probe ? 0 : piece.sample + frames});
    m_pieces.push_back(piece);
}

Recording_Index::Piece Recording_Index::difference(const Check_Report& before,
                                                   const Check_Report& after) const {
    Piece piece;
    for (std::size_t port = 0; port < port_count; ++port) {
        const Port_Findings& old = before.ports[port];
        const Port_Findings& now = after.ports[port];
        piece.samples[port] = step(old.super_frames, now.super_frames);
        piece.row_gaps[port] = step(old.counter_gaps, now.counter_gaps);
        piece.frame_gaps[port] = step(old.frame_counter_gaps, now.frame_counter_gaps);
        piece.wrong_tags[port] = step(old.wrong_tags, now.wrong_tags);
    }
    piece.samples[port_count] = step(before.rhd.frames, after.rhd.frames);
    piece.row_gaps[port_count] = step(before.rhd.counter_gaps, after.rhd.counter_gaps);
    piece.others = others(after) - others(before);
    return piece;
}

std::size_t Recording_Index::size() const {
    const std::lock_guard lock(m_mutex);
    return m_pieces.size();
}

std::optional<Recording_Index::Piece> Recording_Index::piece(std::size_t number) const {
    const std::lock_guard lock(m_mutex);
    return number < m_pieces.size() ? std::optional(m_pieces[number]) : std::nullopt;
}

std::size_t Recording_Index::piece_of(std::uint64_t sample) const {
    const std::lock_guard lock(m_mutex);
    const auto behind =
        std::upper_bound(m_pieces.begin(), m_pieces.end(), sample,
                         [](std::uint64_t wanted, const Piece& piece) { return wanted < piece.sample; });
    return static_cast<std::size_t>(std::max<std::ptrdiff_t>(behind - m_pieces.begin() - 1, 0));
}

std::string Recording_Index::problem() const {
    const std::lock_guard lock(m_mutex);
    return m_problem;
}

std::uint64_t Recording_Index::length() const {
    const std::lock_guard lock(m_mutex);
    return m_length;
}

double Recording_Index::known_part() const {
    const std::uint64_t bytes = m_bytes;
    return m_is_complete || bytes == 0 ? 1.0 : static_cast<double>(m_bytes_read) / static_cast<double>(bytes);
}

std::vector<Damage_Counts> Recording_Index::damage(std::size_t stretches) const {
    std::vector<Damage_Counts> damage(stretches);
    const std::lock_guard lock(m_mutex);
    for (const Piece& piece : m_pieces) {
        const Damage_Counts counts = piece.damage();
        if (counts.all() != 0 && m_length != 0) {
            const double place = static_cast<double>(piece.sample) / static_cast<double>(m_length);
            Damage_Counts& stretch = damage[std::min(
                static_cast<std::size_t>(place * static_cast<double>(stretches)), stretches - 1)];
            stretch.row_gaps += counts.row_gaps;
            stretch.frame_gaps += counts.frame_gaps;
            stretch.wrong_tags += counts.wrong_tags;
            stretch.others += counts.others;
        }
    }
    return damage;
}

} // namespace Pelgar::ORBE::view
