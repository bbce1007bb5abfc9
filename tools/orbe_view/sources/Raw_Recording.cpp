#include "sources/Raw_Recording.h"

#include <algorithm>
#include <utility>

namespace Pelgar::ORBE::view {

Raw_Recording::Raw_Recording(const std::filesystem::path& file, bool may_grow,
                             recorder::Recording_Description description, const Growth_Patience& patience)
    : m_file(file), m_description(std::move(description)), m_index(file, may_grow, patience) {}

std::optional<std::uint64_t> Raw_Recording::begin_of(std::size_t piece) const {
    const auto place = m_index.piece(piece);
    return place ? std::optional(place->sample) : std::nullopt;
}

void Raw_Recording::begin(std::size_t piece, Histories& histories) {
    const auto place = m_index.piece(piece);
    m_player = std::make_unique<Recording_Player>(m_file, m_description, histories, piece,
                                                  place.value_or(Recording_Index::Piece{}));
    for (std::size_t probe = 0; probe < histories.probe_count(); ++probe) {
        const Probe_History& history = histories.probe(probe);
        // What was lost before has been told.
        m_health_lost[static_cast<std::size_t>(history.description().port) - 1] =
            Probe_History::Reading(history).lost_samples();
    }
}

// A rest that was shown and has become longer comes once more.
std::size_t Raw_Recording::next() const {
    const std::size_t next = m_player->next_piece();
    const std::size_t shown = m_player->shown_of_rest();
    return shown != 0 && m_index.bytes_of(next - 1) > shown ? next - 1 : next;
}

bool Raw_Recording::show_next(Histories& /*histories*/) {
    return m_player->decode_piece(m_index.is_complete() && next() + 1 == m_index.size());
}

Health Raw_Recording::health_of(std::size_t begin, std::size_t end, const Histories& histories) {
    Health health;
    const std::uint64_t first = m_index.piece(begin)->sample;
    const std::uint64_t last = m_index.piece(end)->sample;
    const double seconds = static_cast<double>(last - first) / recorder::ap_sample_rate;
    health.seconds = static_cast<double>(last) / recorder::ap_sample_rate;
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
    for (std::size_t probe = 0; probe < histories.probe_count(); ++probe) {
        const Probe_History& history = histories.probe(probe);
        const auto port = static_cast<std::size_t>(history.description().port) - 1;
        const std::uint64_t lost = Probe_History::Reading(history).lost_samples();
        health.streams[port].lost_samples = static_cast<double>(lost - std::min(lost, m_health_lost[port]));
        m_health_lost[port] = lost;
    }
    return health;
}

} // namespace Pelgar::ORBE::view
