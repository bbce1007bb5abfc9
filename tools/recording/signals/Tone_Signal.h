// Tools, recording library. A sine on every channel, with a phase that differs from channel to channel and
// from port to port, so that a value that lands on a wrong channel shows.
#pragma once

#include "signals/A_Signal.h"

#include <array>

namespace Pelgar::ORBE::recording {

class Tone_Signal : public A_Signal {
public:
    // The AP band carries a tone of `ap_frequency` Hz, the LFP band one of a twelfth of it: both tones then
    // lie in the same bin of a spectrum over equally many samples. Port numbers are 1..4.
    Tone_Signal(double ap_frequency, unsigned port);

    void fill(Band band, std::uint64_t sample, std::span<const std::uint16_t> channels,
              std::span<std::uint16_t, channel_count> values) override;

    // The deflection from the middle, in ADC counts.
    static constexpr double amplitude = 300.0;

private:
    static constexpr unsigned table_bits = 14;

    std::array<std::uint16_t, std::size_t{1} << table_bits> m_sine;
    // Phases are fractions of a turn in units of 2^-64, which wrap by themselves and never lose precision.
    std::uint64_t m_phase_step;
    std::array<std::uint64_t, channel_count> m_phases;
};

} // namespace Pelgar::ORBE::recording
