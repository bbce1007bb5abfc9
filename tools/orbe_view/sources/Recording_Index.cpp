#include "sources/Recording_Index.h"

#include "stream_format/Wire_Format.h"

#include <algorithm>
#include <exception>
#include <fstream>

namespace Pelgar::ORBE::view {

namespace {

using namespace recording;

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

Recording_Index::Recording_Index(std::filesystem::path file, bool may_grow, const Growth_Patience& patience)
    : m_file(std::move(file)), m_may_grow(may_grow), m_patience(patience),
      m_grows(may_grow && was_written_within(patience.finished, m_file)),
      m_thread(&Recording_Index::run, this) {}

Recording_Index::~Recording_Index() {
    {
        const std::lock_guard lock(m_mutex);
        m_stops = true;
    }
    m_changed.notify_all();
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
    m_grows = false;
}

void Recording_Index::read() {
    std::ifstream file(m_file, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read '" + m_file.string() + "'");
    }
    using Clock = std::chrono::steady_clock;
    auto grew_at = Clock::now() - (m_grows ? std::chrono::milliseconds(0) : m_patience.finished);
    m_bytes = std::filesystem::file_size(m_file);
    std::vector<std::uint8_t> piece(piece_bytes);
    std::size_t filled = 0;
    auto pause = std::chrono::milliseconds(0);
    while (!wait(pause)) {
        pause = std::chrono::milliseconds(0);
        const std::uint64_t bytes =
            std::max<std::uint64_t>(std::filesystem::file_size(m_file), m_bytes_read + filled);
        if (bytes > m_bytes) {
            m_bytes = bytes;
            grew_at = Clock::now();
        }
        // Behind the end of a file some systems read on only after they were sent there.
        file.clear();
        file.seekg(static_cast<std::streamoff>(m_bytes_read + filled));
        file.read(reinterpret_cast<char*>(piece.data() + filled),
                  static_cast<std::streamsize>(piece.size() - filled));
        filled += static_cast<std::size_t>(file.gcount());
        if (filled == piece.size()) {
            add_piece(piece);
            m_bytes_read += piece.size();
            filled = 0;
            continue;
        }
        if (file.bad()) {
            throw std::runtime_error("cannot read '" + m_file.string() + "' any further");
        }
        // The end, of now or for good.
        const auto quiet = Clock::now() - grew_at;
        const bool is_settled = !m_may_grow || quiet >= m_patience.settled;
        if (is_settled) {
            add_rest(std::span(piece).first(filled - filled % row_bytes));
        }
        m_is_complete = is_settled;
        m_grows = m_may_grow && quiet < m_patience.finished;
        if (!m_may_grow) {
            return;
        }
        pause = m_grows ? m_patience.look : m_patience.later_look;
    }
}

// Whether the index ends.
bool Recording_Index::wait(std::chrono::milliseconds time) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, time, [this] { return m_stops; });
}

void Recording_Index::add_piece(std::span<const std::uint8_t> bytes) {
    m_checker.look_at_piece(bytes);
    const Check_Report report = m_checker.report();
    Piece piece = difference(m_report, report);
    piece.first = m_finder.find(bytes);
    m_report = report;

    const std::lock_guard lock(m_mutex);
    m_whole_length = place(piece);
    m_length = std::max(m_length, m_whole_length);
    m_damage.add(piece.sample, piece.damage());
    m_pieces.push_back(piece);
    m_rest.reset();
    m_rest_bytes = 0;
}

// Looked at beside the whole pieces, because it can still become one.
void Recording_Index::add_rest(std::span<const std::uint8_t> bytes) {
    if (bytes.size() == m_rest_bytes) {
        return;
    }
    Recording_Checker checker = m_checker;
    Sample_Finder finder = m_finder;
    checker.look_at_rest(bytes);
    Piece piece = difference(m_report, checker.report());
    piece.first = finder.find(bytes);

    const std::lock_guard lock(m_mutex);
    m_length = std::max(m_length, place(piece));
    m_rest = piece;
    m_rest_bytes = bytes.size();
}

// Puts the piece behind the whole ones, and answers where it ends.
std::uint64_t Recording_Index::place(Piece& piece) const {
    // Of the inputs, where there is no probe.
    const auto& inputs = piece.first[view::port_count];
    piece.sample = inputs ? inputs->number : m_whole_length;
    std::uint64_t length = inputs ? inputs->end : 0;
    bool has_probe = false;
    for (std::size_t port = 0; port < port_count; ++port) {
        if (piece.first[port]) {
            const auto [first, end] = *piece.first[port];
            piece.sample = has_probe ? std::max(piece.sample, first) : first;
            length = has_probe ? std::max(length, end) : end;
            has_probe = true;
        }
    }
    // The streams' own counters say more than what has come: lost rows are time as well.
    piece.sample = std::max(piece.sample, m_pieces.empty() ? 0 : m_pieces.back().sample);
    return std::max(m_whole_length, length);
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
    return m_pieces.size() + (m_rest ? 1 : 0);
}

std::optional<Recording_Index::Piece> Recording_Index::piece(std::size_t number) const {
    const std::lock_guard lock(m_mutex);
    if (number < m_pieces.size()) {
        return m_pieces[number];
    }
    return number == m_pieces.size() ? m_rest : std::nullopt;
}

std::uint64_t Recording_Index::bytes_of(std::size_t number) const {
    const std::lock_guard lock(m_mutex);
    return number < m_pieces.size() ? piece_bytes : number == m_pieces.size() ? m_rest_bytes : 0;
}

std::size_t Recording_Index::piece_of(std::uint64_t sample) const {
    const std::lock_guard lock(m_mutex);
    if (m_rest && m_rest->sample <= sample) {
        return m_pieces.size();
    }
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
    const auto bytes = static_cast<double>(m_bytes);
    return m_is_complete || bytes == 0.0 ? 1.0 : std::min(static_cast<double>(m_bytes_read) / bytes, 1.0);
}

std::vector<Damage_Counts> Recording_Index::damage(std::size_t stretches) const {
    std::vector<Damage_Counts> damage(stretches);
    const std::lock_guard lock(m_mutex);
    m_damage.show(m_length, damage);
    if (m_rest) {
        Damage_Map::show(m_rest->sample, m_rest->damage(), m_length, damage);
    }
    return damage;
}

} // namespace Pelgar::ORBE::view
