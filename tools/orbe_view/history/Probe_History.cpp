#include "history/Probe_History.h"

namespace Pelgar::ORBE::view {

namespace {

// Two seconds as they are, half a minute in milliseconds.
constexpr History_Size ap_size{recorder::channel_count, 60'000, 30, 32'000};
// Four seconds, and half a minute in steps of two milliseconds.
constexpr History_Size lfp_size{recorder::channel_count, 10'000, 5, 16'000};

std::array<float, recorder::channel_count> spike_counts(const recorder::Probe_Description& description,
                                                        double microvolts) {
    std::array<float, recorder::channel_count> counts{};
    for (std::size_t channel = 0; channel < counts.size(); ++channel) {
        counts[channel] =
            static_cast<float>(microvolts / microvolts_of_count * description.channels[channel].ap_gain);
    }
    return counts;
}

} // namespace

Probe_History::Probe_History(const recorder::Probe_Description& description, double spike_microvolts)
    : m_description(description), m_ap(ap_size), m_lfp(lfp_size),
      m_statistics(spike_counts(description, spike_microvolts)) {}

float Probe_History::scale(Band band, std::size_t channel) const {
    const recorder::Channel_Description& settings = m_description.channels.at(channel);
    return static_cast<float>(microvolts_of_count /
                              (band == Band::ap ? settings.ap_gain : settings.lfp_gain));
}

void Probe_History::append(std::span<const Packet> packets) {
    const std::lock_guard lock(m_mutex);
    for (const Packet& packet : packets) {
        for (std::size_t row = 0; row < packet.numbers.size(); ++row) {
            const std::uint64_t number = packet.numbers[row];
            if (m_has_next && number > m_next) {
                m_lost += number - m_next;
                m_statistics.skip();
            }
            m_has_next = true;
            m_next = number + 1;
            m_ap.append(number, packet.packet->apData[row]);
            m_statistics.add(packet.packet->apData[row]);
        }
        m_samples += packet.numbers.size();
        const std::uint64_t lfp_number = packet.numbers[0] / NP1_PROBE_SUPERFRAMESIZE;
        // Behind a loss two packets can begin in the same LFP sample.
        if (lfp_number >= m_lfp.end()) {
            m_lfp.append(lfp_number, packet.packet->lfpData);
        }
    }
}

void Probe_History::clear() {
    const std::lock_guard lock(m_mutex);
    m_ap.clear();
    m_lfp.clear();
    m_statistics.clear();
    m_has_next = false;
}

} // namespace Pelgar::ORBE::view
