#include "Health_Watch.h"

#include "adapter/Adapter_State.h"

#include <utility>

namespace Pelgar::ORBE::view {

namespace {

constexpr std::size_t adc_stream = port_count;
static_assert(adc_stream == demux::np_port_count, "the library numbers its streams in the same way");

double added(std::uint64_t before, std::uint64_t now) {
    return static_cast<double>(now - before);
}

} // namespace

void Health_Watch::begin(Clock::time_point now) {
    m_looked_at = now;
    m_has_looked = false;
    m_damage = {};
    for (std::size_t stream = 0; stream < stream_count; ++stream) {
        m_counted[stream] = counted(stream).value_or(Counted{});
    }
}

void Health_Watch::came(std::size_t stream) {
    const auto controller = npoe_adapter::current_controller();
    if (!m_damage[stream] && controller) {
        m_damage[stream] = controller->get_stream_damage(static_cast<unsigned>(stream));
    }
}

void Health_Watch::look(Clock::time_point now, double seconds, const Queue_Fills& fills) {
    const double passed = std::chrono::duration<double>(now - m_looked_at).count();
    Health health;
    health.seconds = seconds;
    note_locks(health);
    for (std::size_t stream = 0; stream < stream_count; ++stream) {
        const auto counts = counted(stream);
        if (!counts) {
            continue;
        }
        Stream_Health& line = health.streams[stream];
        Counted& before = m_counted[stream];
        line.queue_fill = fills[stream];
        line.rate = added(before.samples, counts->samples) / passed;
        before.samples = counts->samples;
        if (m_has_looked) {
            line.lost_samples = added(before.lost, counts->lost);
            before.lost = counts->lost;
            note_damage(line, stream);
        }
    }
    m_looked_at = now;
    if (std::exchange(m_has_looked, true)) {
        m_histories.health().add(health);
    }
}

std::optional<Health_Watch::Counted> Health_Watch::counted(std::size_t stream) const {
    if (stream == adc_stream) {
        const ADC_History::Reading reading(*m_histories.adc());
        return Counted{reading.samples(), reading.lost_samples()};
    }
    if (const Probe_History* const probe = m_histories.probe_on(static_cast<int>(stream) + 1)) {
        const Probe_History::Reading reading(*probe);
        return Counted{reading.samples(), reading.lost_samples()};
    }
    return std::nullopt;
}

void Health_Watch::note_damage(Stream_Health& line, std::size_t stream) {
    came(stream); // or nothing will, for all that is known
    const auto controller = npoe_adapter::current_controller();
    if (!m_damage[stream] || !controller) {
        return;
    }
    const demux::Stream_Damage now = controller->get_stream_damage(static_cast<unsigned>(stream));
    const demux::Stream_Damage before = *std::exchange(m_damage[stream], now);
    line.row_gaps = added(before.row_gaps, now.row_gaps);
    if (stream != adc_stream) {
        line.frame_gaps = added(before.frame_gaps, now.frame_gaps);
        line.wrong_tags = added(before.wrong_tags, now.wrong_tags);
    }
}

// A recording that plays the box has no links: the ports that are in it count as locked.
void Health_Watch::note_locks(Health& health) const {
    const auto controller = npoe_adapter::current_controller();
    if (!controller) {
        return;
    }
    const bool is_simulation = controller->is_in_simulation_mode();
    const unsigned locks = is_simulation ? 0U : controller->get_np_port_status_now();
    for (std::size_t port = 0; port < port_count; ++port) {
        const bool is_played = is_simulation && m_histories.probe_on(static_cast<int>(port) + 1) != nullptr;
        health.streams[port].link_lock = is_played || (locks >> port & 1U) != 0 ? 1.0 : 0.0;
    }
}

} // namespace Pelgar::ORBE::view
