#include "history/Channel_Statistics.h"

#include <algorithm>
#include <cmath>

namespace Pelgar::ORBE::view {

Channel_Statistics::Channel_Statistics(const std::array<float, recorder::channel_count>& spike_counts)
    : m_spike_counts(spike_counts) {
    clear();
}

void Channel_Statistics::clear() {
    m_parts = {};
    m_part = 0;
    m_full_parts = 0;
    m_samples = 0;
    m_has_previous = false;
    m_rms = {};
    m_spikes = {};
    for (std::size_t channel = 0; channel < recorder::channel_count; ++channel) {
        m_thresholds[channel] = static_cast<std::int16_t>(std::max(-m_spike_counts[channel], -32768.0F));
    }
}

void Channel_Statistics::add(std::span<const std::int16_t> samples) {
    Part& part = m_parts[m_part];
    const std::int16_t* const values = samples.data();
    for (std::size_t channel = 0; channel < recorder::channel_count; ++channel) {
        const std::int32_t value = values[channel];
        part.sums[channel] += value;
        part.squares[channel] += static_cast<std::uint32_t>(value * value);
    }
    if (m_has_previous) {
        for (std::size_t channel = 0; channel < recorder::channel_count; ++channel) {
            const bool begins =
                (values[channel] < m_thresholds[channel]) & (m_previous[channel] >= m_thresholds[channel]);
            part.spikes[channel] = static_cast<std::int16_t>(part.spikes[channel] + (begins ? 1 : 0));
        }
    }
    std::copy_n(values, recorder::channel_count, m_previous.begin());
    m_has_previous = true;
    if (++m_samples == part_samples) {
        finish_part();
    }
}

void Channel_Statistics::finish_part() {
    m_samples = 0;
    m_full_parts = std::min(m_full_parts + 1, part_count);
    const Part& last = m_parts[m_part];
    const double samples = static_cast<double>(m_full_parts * part_samples);
    for (std::size_t channel = 0; channel < recorder::channel_count; ++channel) {
        double sum = 0.0;
        double squares = 0.0;
        double spikes = 0.0;
        for (const Part& part : m_parts) {
            sum += part.sums[channel];
            squares += static_cast<double>(part.squares[channel]);
            spikes += part.spikes[channel];
        }
        const double mean = sum / samples;
        m_rms[channel] = static_cast<float>(std::sqrt(std::max(squares / samples - mean * mean, 0.0)));
        m_spikes[channel] = static_cast<float>(spikes * recorder::ap_sample_rate / samples);
        const double middle = static_cast<double>(last.sums[channel]) / part_samples;
        const double threshold = std::floor(middle - static_cast<double>(m_spike_counts[channel]));
        m_thresholds[channel] = static_cast<std::int16_t>(std::clamp(threshold, -32768.0, 32767.0));
    }
    m_part = (m_part + 1) % part_count;
    m_parts[m_part] = {};
}

} // namespace Pelgar::ORBE::view
