// Program orbe-view, history. How strong the signal of each channel is and how often it spikes, over the last
// second. Whoever holds it sees to it that one thread at a time uses it; nothing blocks.
#pragma once

#include "description/Recording_Description.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Pelgar::ORBE::view {

class Channel_Statistics {
public:
    using Values = std::array<float, recorder::channel_count>;

    // A spike begins where a sample is this many counts below the channel's mean, and the one before was not.
    explicit Channel_Statistics(const std::array<float, recorder::channel_count>& spike_counts);

    // The next AP sample of every channel.
    void add(std::span<const std::int16_t> samples);

    // Samples are missing before the next one.
    void skip() { m_has_previous = false; }

    void clear();

    // Of the last second, anew four times a second; 0 until the first quarter of a second is full. In counts,
    // about the mean.
    const Values& rms() const { return m_rms; }

    // A second.
    const Values& spikes() const { return m_spikes; }

private:
    static constexpr std::size_t part_samples = 7500;
    static constexpr std::size_t part_count = 4;

    struct Part {
        std::array<std::int32_t, recorder::channel_count> sums{};
        std::array<std::uint64_t, recorder::channel_count> squares{};
        std::array<std::int16_t, recorder::channel_count> spikes{};
    };

    void finish_part();

    std::array<float, recorder::channel_count> m_spike_counts;
    std::array<std::int16_t, recorder::channel_count> m_thresholds{};
    std::array<std::int16_t, recorder::channel_count> m_previous{};
    bool m_has_previous = false;
    std::array<Part, part_count> m_parts{};
    std::size_t m_part = 0;
    std::size_t m_full_parts = 0;
    std::size_t m_samples = 0;
    Values m_rms{};
    Values m_spikes{};
};

} // namespace Pelgar::ORBE::view
