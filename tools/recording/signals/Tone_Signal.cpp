#include "signals/Tone_Signal.h"

#include <cmath>
#include <numbers>

namespace Pelgar::ORBE::recording {

namespace {

std::uint64_t fraction_of_turn(double turns) {
    return static_cast<std::uint64_t>(std::ldexp(turns - std::floor(turns), 63)) << 1;
}

} // namespace

Tone_Signal::Tone_Signal(double ap_frequency, unsigned port)
    : m_phase_step(fraction_of_turn(ap_frequency / sample_rate(Band::ap))) {
    for (std::size_t i = 0; i < m_sine.size(); ++i) {
        const double turns = static_cast<double>(i) / static_cast<double>(m_sine.size());
        const double sine = std::sin(2.0 * std::numbers::pi * turns);
        m_sine[i] = static_cast<std::uint16_t>(std::lround(sample_middle + amplitude * sine));
    }
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        const double place = static_cast<double>(channel) + (port - 1) / 4.0;
        m_phases[channel] = fraction_of_turn(place / channel_count);
    }
}

void Tone_Signal::fill(Band /*band*/, std::uint64_t sample, std::span<const std::uint16_t> channels,
                       std::span<std::uint16_t, channel_count> values) {
    const std::uint64_t turned = sample * m_phase_step;
    for (const std::uint16_t channel : channels) {
        values[channel] = m_sine[(turned + m_phases[channel]) >> (64 - table_bits)];
    }
}

} // namespace Pelgar::ORBE::recording
