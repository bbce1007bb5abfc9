#include "sources/Recording_Source.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace Pelgar::ORBE::view {

namespace {

constexpr double rate = recorder::ap_sample_rate;

// Behind a jump so much before the time is shown as well: pictures of seconds are whole at once.
constexpr std::uint64_t samples_before = 3 * recorder::ap_sample_rate;
// From so near the end of a growing recording on it is followed.
constexpr double nearly_the_end = 0.2;
// So much of a growing recording must be known before its end is.
constexpr double nearly_all = 0.95;
constexpr std::uint64_t health_samples = recorder::ap_sample_rate / 2;
constexpr auto patience = std::chrono::milliseconds(10);

} // namespace

Recording_Source::Recording_Source(std::unique_ptr<A_Recording> recording, double spike_microvolts)
    : m_recording(std::move(recording)),
      m_histories(m_recording->description().probes, m_recording->description().adc.has_value(),
                  m_recording->description().adc ? m_recording->description().adc->range_volts : 1.0,
                  spike_microvolts, m_recording->description().saved_channels),
      m_jump(Jump{0, m_recording->grows()}), m_thread(&Recording_Source::run, this) {}

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
    status.name = m_recording->name();
    status.kind = m_recording->grows() ? "growing" : "recording";
    status.can_jump = true;
    status.position = m_position;
    status.length = static_cast<double>(m_recording->length()) / rate;
    status.known_part = m_recording->known_part();
    status.problem = m_recording->problem();
    const std::lock_guard lock(m_mutex);
    status.is_playing = m_plays;
    if (!m_problem.empty()) {
        status.problem = m_problem;
    }
    return status;
}

void Recording_Source::jump(double seconds, bool plays) {
    const double last = static_cast<double>(m_recording->length()) / rate;
    const double wanted = std::clamp(seconds, 0.0, last);
    const double near_end = last - nearly_the_end - static_cast<double>(m_recording->burst()) / rate;
    {
        const std::lock_guard lock(m_mutex);
        m_jump = Jump{static_cast<std::uint64_t>(wanted * rate + 0.5),
                      m_recording->grows() && plays && wanted > near_end};
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
        m_recording->look();
        if (const std::optional<Jump> jump = take_jump()) {
            begin(*jump);
        }
        {
            const std::lock_guard lock(m_mutex);
            if (m_stops) {
                return;
            }
        }
        if (!m_has_begun || !advance()) {
            wait(patience);
        }
    }
}

std::optional<Recording_Source::Jump> Recording_Source::take_jump() {
    if (m_recording->size() == 0) {
        return std::nullopt; // nothing is known yet
    }
    const std::lock_guard lock(m_mutex);
    if (m_jump && m_jump->follows) {
        if (m_recording->known_part() < nearly_all) {
            return std::nullopt;
        }
        m_jump->sample = m_recording->length();
    }
    return std::exchange(m_jump, std::nullopt);
}

void Recording_Source::begin(const Jump& jump) {
    const std::size_t piece = m_recording->piece_of(jump.sample - std::min(jump.sample, samples_before));
    m_histories.clear();
    m_recording->begin(piece, m_histories);
    m_has_begun = true;
    m_target = jump.sample;
    m_position = jump.sample;
    m_follows = jump.follows;
    m_was_playing = false;
    m_health_piece = piece;
}

// Shows the next piece when it is its time. False when there is nothing to do.
bool Recording_Source::advance() {
    const std::size_t number = m_recording->next();
    const auto piece = m_recording->begin_of(number);
    bool plays = false;
    {
        const std::lock_guard lock(m_mutex);
        plays = m_plays;
    }
    m_follows = m_follows && plays;
    const std::uint64_t burst = m_recording->burst();
    const bool must_catch_up = m_follows && piece && (burst == 0 || *piece + burst <= m_recording->length());
    const bool is_behind = piece && (must_catch_up || *piece <= m_target);
    if (!is_behind && !plays) {
        m_was_playing = false;
        m_target = m_position;
        return false;
    }
    if (must_catch_up || (m_follows && burst == 0)) {
        m_was_playing = false;
        m_position = std::max<std::uint64_t>(m_position, piece.value_or(m_recording->length()));
    } else if (!is_behind) {
        const auto now = Clock::now();
        if (!m_was_playing) {
            m_was_playing = true;
            m_anchor_time = now;
            m_anchor_sample = m_position;
        }
        const std::chrono::duration<double> passed = now - m_anchor_time;
        const std::uint64_t due = m_anchor_sample + static_cast<std::uint64_t>(passed.count() * rate);
        const std::uint64_t there = piece.value_or(m_recording->length());
        m_position = std::min(due, std::max<std::uint64_t>(there, m_position));
        if (!piece) {
            // The end, of now or for good: time goes on with what comes.
            m_anchor_time = now;
            m_anchor_sample = m_position;
        } else if (due < *piece) {
            return false;
        }
    }
    if (!piece) {
        return false;
    }
    const bool shown = m_recording->show_next(m_histories);
    if (shown) {
        follow_health(number);
    }
    return shown;
}

void Recording_Source::follow_health(std::size_t piece) {
    const auto begin = m_recording->begin_of(m_health_piece);
    const auto end = m_recording->begin_of(piece + 1);
    if (begin && end && *end >= *begin + health_samples) {
        m_histories.health().add(m_recording->health_of(m_health_piece, piece + 1, m_histories));
        m_health_piece = piece + 1;
    }
}

void Recording_Source::wait(std::chrono::milliseconds time) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, time, [this] { return m_stops || m_jump.has_value(); });
}

} // namespace Pelgar::ORBE::view
