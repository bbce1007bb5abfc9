// Tools, recording library. Spikes in light noise in the AP band, twenty a second and channel at random
// times, and a slow wave in the LFP band.
#pragma once

#include "signals/A_Signal.h"

#include <array>

namespace Pelgar::ORBE::recording {

class Spike_Signal : public A_Signal {
public:
    explicit Spike_Signal(std::uint64_t seed) : m_seed(seed) {}

    void fill(Band band, std::uint64_t sample, std::span<const std::uint16_t> channels,
              std::span<std::uint16_t, channel_count> values) override;

    // Every channel has one spike in each window of this many AP samples (50 ms).
    static constexpr std::uint64_t window_samples = 1500;

    // Where in window number `window` the channel's spike begins, in samples from the start of the window.
    std::uint64_t spike_start(std::uint64_t window, std::size_t channel) const;

private:
    void fill_ap(std::uint64_t sample, std::span<const std::uint16_t> channels,
                 std::span<std::uint16_t, channel_count> values);

    std::uint64_t m_seed;
    // The spike times of the window that is being generated.
    std::uint64_t m_window = ~std::uint64_t{0};
    std::array<std::uint16_t, channel_count> m_starts{};
};

} // namespace Pelgar::ORBE::recording
