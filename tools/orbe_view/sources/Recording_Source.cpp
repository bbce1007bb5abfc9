#include "sources/Recording_Source.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace Pelgar::ORBE::view {

namespace {

constexpr double rate = recorder::ap_sample_rate;

// Behind a jump so much before the time is decoded as well: pictures of seconds are whole at once.
constexpr std::uint64_t samples_before = 3 * recorder::ap_sample_rate;
// From so near the end of a growing recording on it is followed.
constexpr double nearly_the_end = 0.2;
// So much of a growing recording must be known before its end is.
constexpr double nearly_all = 0.95;
constexpr std::uint64_t health_samples = recorder::ap_sample_rate / 2;
constexpr auto patience = std::chrono::milliseconds(10);

} // namespace

Recording_Source::Recording_Source(Recording_Choice choice)
    : m_choice(std::move(choice)),
      m_histories(m_choice.description.probes, m_choice.description.adc.has_value(),
                  m_choice.description.adc ? m_choice.description.adc->range_volts : 1.0,
                  m_choice.spike_microvolts),
      m_index(m_choice.file, m_choice.grows), m_jump(Jump{0, m_choice.grows}),
      m_thread(&Recording_Source::run, this) {}

Recording_Source::~Recording_Source() {
    {
        const std::lock_guard lock(m_mutex);
        m_stops = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

Source_Status Recording_Source::status() const {
    Source_Status status;
    status.name = m_choice.file.filename().string();
    status.kind = m_choice.grows ? "growing" : "recording";
    status.can_jump = true;
    status.position = m_position;
    status.length = static_cast<double>(m_index.length()) / rate;
    status.known_part = m_index.known_part();
    status.problem = m_index.problem();
    const std::lock_guard lock(m_mutex);
    status.is_playing = m_plays;
    if (!m_problem.empty()) {
        status.problem = m_problem;
    }
    return status;
}

void Recording_Source::jump(double seconds, bool plays) {
    const double last = static_cast<double>(m_index.length()) / rate;
    const double wanted = std::clamp(seconds, 0.0, last);
    {
        const std::lock_guard lock(m_mutex);
        m_jump = Jump{static_cast<std::uint64_t>(wanted * rate + 0.5),
                      m_choice.grows && plays && wanted > last - nearly_the_end};
        m_plays = plays;
    }
    m_changed.notify_all();
}

void Recording_Source::play(bool plays) {
    {
        const std::lock_guard lock(m_mutex);
        m_plays = plays;
    }
    m_changed.notify_all();
}

void Recording_Source::run() {
    try {
        run_until_stopped();
    } catch (const std::exception& error) {
        const std::lock_guard lock(m_mutex);
        m_problem = error.what();
    }
}

void Recording_Source::run_until_stopped() {
    while (true) {
        if (const std::optional<Jump> jump = take_jump()) {
            begin(*jump);
        }
        {
            const std::lock_guard lock(m_mutex);
            if (m_stops) {
                return;
            }
        }
        if (!m_player || !advance()) {
            wait(patience);
        }
    }
}

std::optional<Recording_Source::Jump> Recording_Source::take_jump() {
    if (m_index.size() == 0) {
        return std::nullopt; // nothing is known yet
    }
    const std::lock_guard lock(m_mutex);
    if (m_jump && m_jump->follows) {
        if (m_index.known_part() < nearly_all) {
            return std::nullopt;
        }
        m_jump->sample = m_index.length();
    }
    return std::exchange(m_jump, std::nullopt);
}

void Recording_Source::begin(const Jump& jump) {
    const std::size_t piece = m_index.piece_of(jump.sample - std::min(jump.sample, samples_before));
    const auto place = m_index.piece(piece);
    m_player.reset();
    m_histories.clear();
    m_player = std::make_unique<Recording_Player>(m_choice.file, m_choice.description, m_histories, piece,
                                                  place.value_or(Recording_Index::Piece{}));
    m_target = jump.sample;
    m_position = jump.sample;
    m_follows = jump.follows;
    m_was_playing = false;
    m_health_piece = piece;
    for (std::size_t probe = 0; probe < m_histories.probe_count(); ++probe) {
        const Probe_History& history = m_histories.probe(probe);
        // What was lost before the jump has been told.
        m_health_lost[static_cast<std::size_t>(history.description().port) - 1] =
            Probe_History::Reading(history).lost_samples();
    }
}

// Decodes the next piece when it is its time. False when there is nothing to do.
bool Recording_Source::advance() {
    const std::size_t number = m_player->next_piece();
    const auto piece = m_index.piece(number);
    bool plays = false;
    {
        const std::lock_guard lock(m_mutex);
        plays = m_plays;
    }
    m_follows = m_follows && plays;
    const bool is_behind = piece && (m_follows || piece->sample <= m_target);
    if (!is_behind && !plays) {
        m_was_playing = false;
        m_target = m_position;
        return false;
    }
    if (m_follows) {
        m_position = std::max<std::uint64_t>(m_position, piece ? piece->sample : m_index.length());
    } else if (!is_behind) {
        const auto now = Clock::now();
        if (!m_was_playing) {
            m_was_playing = true;
            m_anchor_time = now;
            m_anchor_sample = m_position;
        }
        const std::chrono::duration<double> passed = now - m_anchor_time;
        const std::uint64_t due = m_anchor_sample + static_cast<std::uint64_t>(passed.count() * rate);
        const std::uint64_t there = piece ? piece->sample : m_index.length();
        m_position = std::min(due, std::max<std::uint64_t>(there, m_position));
        if (!piece) {
            // The end, of now or for good: time goes on with what comes.
            m_anchor_time = now;
            m_anchor_sample = m_position;
        } else if (due < piece->sample) {
            return false;
        }
    }
    if (!piece) {
        return false;
    }
    const bool decoded = m_player->decode_piece(m_index.is_complete() && number + 1 == m_index.size());
    if (decoded) {
        follow_health(number);
    }
    return decoded;
}

void Recording_Source::follow_health(std::size_t piece) {
    const auto begin = m_index.piece(m_health_piece);
    const auto end = m_index.piece(piece + 1);
    if (begin && end && end->sample >= begin->sample + health_samples) {
        m_histories.health().add(health_of(m_health_piece, piece + 1));
        m_health_piece = piece + 1;
    }
}

Health Recording_Source::health_of(std::size_t begin, std::size_t end) {
    Health health;
    const std::uint64_t first = m_index.piece(begin)->sample;
    const std::uint64_t last = m_index.piece(end)->sample;
    const double seconds = static_cast<double>(last - first) / rate;
    health.seconds = static_cast<double>(last) / rate;
    for (Stream_Health& stream : health.streams) {
        stream.rate = 0.0;
        stream.row_gaps = 0.0;
    }
    for (std::size_t port = 0; port < port_count; ++port) {
        health.streams[port].frame_gaps = 0.0;
        health.streams[port].wrong_tags = 0.0;
    }
    for (std::size_t number = begin; number < end; ++number) {
        const Recording_Index::Piece piece = *m_index.piece(number);
        for (std::size_t stream = 0; stream < stream_count; ++stream) {
            health.streams[stream].rate += piece.samples[stream] / seconds;
            health.streams[stream].row_gaps += piece.row_gaps[stream];
        }
        for (std::size_t port = 0; port < port_count; ++port) {
            health.streams[port].frame_gaps += piece.frame_gaps[port];
            health.streams[port].wrong_tags += piece.wrong_tags[port];
        }
    }
    for (std::size_t probe = 0; probe < m_histories.probe_count(); ++probe) {
        const Probe_History& history = m_histories.probe(probe);
        const auto port = static_cast<std::size_t>(history.description().port) - 1;
        const std::uint64_t lost = Probe_History::Reading(history).lost_samples();
        health.streams[port].lost_samples = static_cast<double>(lost - std::min(lost, m_health_lost[port]));
        m_health_lost[port] = lost;
    }
    return health;
}

void Recording_Source::wait(std::chrono::milliseconds time) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, time, [this] { return m_stops || m_jump.has_value(); });
}

} // namespace Pelgar::ORBE::view
