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

Probe_History::Probe_History(const recorder::Probe_Description& description, double spike_microvolts,
                             const std::vector<int>& channels)
    : m_description(description), m_ap(ap_size), m_lfp(lfp_size),
      m_statistics(spike_counts(description, spike_microvolts)) {
    for (const int channel : channels) {
        m_channels.set(static_cast<std::size_t>(channel));
    }
    if (channels.empty()) {
        m_channels.set();
    }
}

float Probe_History::scale(Band band, std::size_t channel) const {
    const recorder::Channel_Description& settings = m_description.channels.at(channel);
    return static_cast<float>(microvolts_of_count /
                              (band == Band::ap ? settings.ap_gain : settings.lfp_gain));
}

void Probe_History::append(std::span<const Packet> packets) {
    const std::lock_guard lock(m_mutex);
    for (const Packet& packet : packets) {
        for (std::size_t row = 0; row < packet.numbers.size(); ++row) {
            add_ap(packet.numbers[row], packet.packet->apData[row]);
        }
        const std::uint64_t lfp_number = packet.numbers[0] / NP1_PROBE_SUPERFRAMESIZE;
        // Behind a loss two packets can begin in the same LFP sample.
        if (lfp_number >= m_lfp.end()) {
            m_lfp.append(lfp_number, packet.packet->lfpData);
        }
    }
}

void Probe_History::append(Band band, std::uint64_t first, std::span<const std::int16_t> rows) {
    const std::lock_guard lock(m_mutex);
    for (std::size_t at = 0; at < rows.size(); at += recorder::channel_count, ++first) {
        const auto values = rows.subspan(at, recorder::channel_count);
        if (band == Band::ap) {
            add_ap(first, values);
        } else {
            m_lfp.append(first, values);
        }
    }
}

void Probe_History::append_lost(Band band, std::uint64_t first, std::uint64_t count) {
    const std::lock_guard lock(m_mutex);
    if (band == Band::ap) {
        m_losses.lose(first, count);
        m_ap.append_lost(first, count);
        m_statistics.skip();
    } else {
        m_lfp.append_lost(first, count);
    }
}

void Probe_History::add_ap(std::uint64_t number, std::span<const std::int16_t> values) {
    if (m_losses.come(number) != 0) {
        m_statistics.skip();
    }
    m_ap.append(number, values);
    m_statistics.add(values);
    ++m_samples;
}

void Probe_History::clear() {
    const std::lock_guard lock(m_mutex);
    m_ap.clear();
    m_lfp.clear();
    m_statistics.clear();
    m_losses.jump();
}

void Probe_History::begin_anew() {
    clear();
    const std::lock_guard lock(m_mutex);
    m_losses.begin_anew();
}

} // namespace Pelgar::ORBE::view
