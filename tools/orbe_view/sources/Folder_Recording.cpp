#include "sources/Folder_Recording.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Pelgar::ORBE::view {

namespace {

using Kind = Folder_Stream::Kind;

// 20 ms, in whole LFP samples.
constexpr std::uint64_t piece_samples = 600;
// Streams are written a quarter of a second at a time, and not all at once. One that lags more than this
// behind the others has ended.
constexpr std::uint64_t most_lag = recorder::ap_sample_rate;
constexpr Growth_Patience patience;

const Gap_List no_gaps;

const Gap_List& gaps_of(const Gap_Lists& gaps, const Folder_Stream& stream) {
    const auto found = gaps.find(stream.name);
    return found == gaps.end() ? no_gaps : found->second;
}

std::vector<Stream_Feed> feeds_of(const Folder_Layout& layout) {
    std::vector<Stream_Feed> feeds;
    for (const Folder_Stream& stream : layout.streams) {
        feeds.emplace_back(stream);
    }
    return feeds;
}

} // namespace

Folder_Recording::Folder_Recording(Folder_Layout layout, Clock::time_point now)
    : m_layout(std::move(layout)), m_feeds(feeds_of(m_layout)), m_gap_table(m_layout.folder),
      m_looked_at(now), m_grew_at(now) {
    for (Stream_Feed& feed : m_feeds) {
        feed.look();
    }
    if (!was_written_lately()) {
        m_grew_at = now - patience.finished;
    }
    publish(now);
    if (m_state.length == 0 && !m_state.grows) {
        throw std::runtime_error("'" + m_layout.folder.string() + "' holds no sample");
    }
}

bool Folder_Recording::was_written_lately() const {
    return was_written_within(patience.finished, m_layout.folder / recorder::description_file_name) ||
           std::any_of(m_feeds.begin(), m_feeds.end(), [](const Stream_Feed& feed) {
               return was_written_within(patience.finished, feed.stream().data);
           });
}

void Folder_Recording::look() {
    look(Clock::now());
}

void Folder_Recording::look(Clock::time_point now) {
    if (now - m_looked_at < patience.look) {
        return;
    }
    m_looked_at = now;
    for (Stream_Feed& feed : m_feeds) {
        if (feed.look()) {
            m_grew_at = now;
        }
    }
    publish(now);
}

void Folder_Recording::publish(Clock::time_point now) {
    // The table last: the line of a gap is on the disk before the samples behind it are.
    if (m_layout.has_gap_table) {
        m_gap_table.look();
    }
    const bool is_settled = now - m_grew_at >= patience.settled;
    State state;
    state.grows = now - m_grew_at < patience.finished;
    state.gaps = m_gap_table.gaps();
    std::uint64_t longest = 0;
    std::uint64_t shortest = ~std::uint64_t{0};
    for (const Stream_Feed& feed : m_feeds) {
        state.rows.push_back(feed.rows(is_settled));
        const std::uint64_t samples = state.rows.back() * feed.stream().step();
        longest = std::max(longest, samples);
        shortest = std::min(shortest, samples);
    }
    state.length = is_settled ? longest : std::max(shortest, longest - std::min(longest, most_lag));
    if (longest > 0) { // before that the table need not be there
        state.problem = m_gap_table.problem();
    }
    const std::lock_guard lock(m_mutex);
    state.length = std::max(state.length, m_state.length);
    state.pieces =
        static_cast<std::size_t>((state.length + (is_settled ? piece_samples - 1 : 0)) / piece_samples);
    state.pieces = std::max(state.pieces, m_state.pieces);
    m_state = std::move(state);
}

Folder_Recording::State Folder_Recording::state() const {
    const std::lock_guard lock(m_mutex);
    return m_state;
}

bool Folder_Recording::grows() const {
    const std::lock_guard lock(m_mutex);
    return m_state.grows;
}

std::string Folder_Recording::problem() const {
    const std::lock_guard lock(m_mutex);
    return m_state.problem;
}

std::size_t Folder_Recording::size() const {
    const std::lock_guard lock(m_mutex);
    return m_state.pieces;
}

std::optional<std::uint64_t> Folder_Recording::begin_of(std::size_t piece) const {
    return piece < size() ? std::optional(piece * piece_samples) : std::nullopt;
}

std::size_t Folder_Recording::piece_of(std::uint64_t sample) const {
    return std::min<std::size_t>(static_cast<std::size_t>(sample / piece_samples),
                                 std::max<std::size_t>(size(), 1) - 1);
}

std::uint64_t Folder_Recording::length() const {
    const std::lock_guard lock(m_mutex);
    return m_state.length;
}

// Two of the quarters of a second that are written at once.
std::uint64_t Folder_Recording::burst() const {
    return recorder::ap_sample_rate / 2;
}

std::vector<Damage_Counts> Folder_Recording::damage(std::size_t stretches) const {
    const State state = this->state();
    std::vector<Damage_Counts> damage(stretches);
    for (std::size_t place = 0; place < m_layout.streams.size(); ++place) {
        const Folder_Stream& stream = m_layout.streams[place];
        const Gap_List& gaps = gaps_of(*state.gaps, stream);
        const std::uint64_t end = std::min(state.length, state.rows[place]);
        if (stream.kind == Kind::lfp || gaps.lost_in({0, end}) == 0) {
            continue; // what the LFP band has lost, the AP band has lost as well
        }
        const auto border = [&](std::size_t stretch) {
            return std::min(end, static_cast<std::uint64_t>(static_cast<double>(state.length) *
                                                            static_cast<double>(stretch) /
                                                            static_cast<double>(stretches)));
        };
        for (std::size_t stretch = 0; stretch < stretches; ++stretch) {
            damage[stretch].lost += gaps.lost_in({border(stretch), border(stretch + 1)});
        }
    }
    return damage;
}

void Folder_Recording::begin(std::size_t piece, Histories& /*histories*/) {
    m_next = piece;
    for (Stream_Feed& feed : m_feeds) {
        feed.go_to(piece * piece_samples / feed.stream().step());
    }
}

bool Folder_Recording::show_next(Histories& histories) {
    const State state = this->state();
    if (m_next >= state.pieces) {
        return false;
    }
    ++m_next;
    for (std::size_t place = 0; place < m_feeds.size(); ++place) {
        Stream_Feed& feed = m_feeds[place];
        // A stream that lags behind is shown later, with another piece.
        feed.show(std::min(state.rows[place], m_next * piece_samples / feed.stream().step()),
                  gaps_of(*state.gaps, feed.stream()), histories);
    }
    return true;
}

// Of the lost samples of both bands those of the AP band are told, as everywhere.
Health Folder_Recording::health_of(std::size_t begin, std::size_t end, const Histories& /*histories*/) {
    const State state = this->state();
    Health health;
    const std::uint64_t last = end * piece_samples;
    const double seconds = static_cast<double>((end - begin) * piece_samples) / recorder::ap_sample_rate;
    health.seconds = static_cast<double>(last) / recorder::ap_sample_rate;
    for (std::size_t place = 0; place < m_layout.streams.size(); ++place) {
        const Folder_Stream& stream = m_layout.streams[place];
        if (stream.kind == Kind::lfp) {
            continue;
        }
        const Sample_Range range{std::min(begin * piece_samples, state.rows[place]),
                                 std::min(last, state.rows[place])};
        const std::uint64_t lost = gaps_of(*state.gaps, stream).lost_in(range);
        const std::size_t row =
            stream.kind == Kind::adc
                ? port_count
                : static_cast<std::size_t>(m_layout.description.probes[stream.probe].port) - 1;
        health.streams[row].rate = static_cast<double>(range.end - range.begin - lost) / seconds;
        health.streams[row].lost_samples = m_layout.has_gap_table ? static_cast<double>(lost) : unknown;
    }
    return health;
}

} // namespace Pelgar::ORBE::view
