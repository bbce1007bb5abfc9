#include "signals/Spike_Signal.h"

#include "numbers/Hash.h"

#include <cmath>
#include <numbers>

namespace Pelgar::ORBE::recording {

namespace {

// One spike, in counts from the base line, at 30 kHz: a steep fall, a slower return, an overshoot.
constexpr std::array<int, 32> spike_shape = {0,    -8,  -28, -70, -135, -210, -270, -300, -290, -250, -195,
                                             -140, -88, -44, -8,  20,   42,   57,   66,   70,   69,   65,
                                             59,   52,  44,  36,  28,   21,   15,   10,   5,    2};

constexpr double wave_frequency = 8.0;
constexpr double wave_amplitude = 120.0;

// Noise of four bits: -8 to 7 counts.
int noise(std::uint64_t& random) {
    const int value = static_cast<int>(random & 0xF) - 8;
    random >>= 4;
    return value;
}

constexpr std::size_t channels_per_draw = 16;

} // namespace

std::uint64_t Spike_Signal::spike_start(std::uint64_t window, std::size_t channel) const {
    return mix(mix(m_seed, window), channel) % (window_samples - spike_shape.size());
}

void Spike_Signal::fill(Band band, std::uint64_t sample, std::span<const std::uint16_t> channels,
                        std::span<std::uint16_t, channel_count> values) {
    if (band == Band::ap) {
        fill_ap(sample, channels, values);
        return;
    }
    const double seconds = static_cast<double>(sample) / sample_rate(Band::lfp);
    for (const std::uint16_t channel : channels) {
        const double turns = wave_frequency * seconds + static_cast<double>(channel) / channel_count;
        const double wave = wave_amplitude * std::sin(2.0 * std::numbers::pi * turns);
        values[channel] = static_cast<std::uint16_t>(std::lround(sample_middle + wave));
    }
}

void Spike_Signal::fill_ap(std::uint64_t sample, std::span<const std::uint16_t> channels,
                           std::span<std::uint16_t, channel_count> values) {
    const std::uint64_t window = sample / window_samples;
    if (window != m_window) {
        m_window = window;
        for (std::size_t channel = 0; channel < channel_count; ++channel) {
            m_starts[channel] = static_cast<std::uint16_t>(spike_start(window, channel));
        }
    }
    const std::uint64_t in_window = sample % window_samples;
    const std::uint64_t seed = mix(m_seed + 1, sample);
    std::uint64_t random = 0;
    std::size_t drawn = channel_count;
    for (const std::uint16_t channel : channels) {
        if (channel / channels_per_draw != drawn) {
            drawn = channel / channels_per_draw;
            random = mix(seed + drawn);
        }
        int value = sample_middle + noise(random);
        const std::uint64_t in_spike = in_window - m_starts[channel];
        if (in_spike < spike_shape.size()) {
            value += spike_shape[in_spike];
        }
        values[channel] = static_cast<std::uint16_t>(value);
    }
}

} // namespace Pelgar::ORBE::recording
