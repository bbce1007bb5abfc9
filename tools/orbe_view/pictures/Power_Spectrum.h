// Program orbe-view, pictures. The spectrum of a channel. One thread; nothing blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Pelgar::ORBE::view {

class Power_Spectrum {
public:
    // Over stretches of `length` samples, a power of two.
    explicit Power_Spectrum(std::size_t length);

    std::size_t length() const { return m_window.size(); }

    // So many samples are the most that are used: eight stretches, each half over the next.
    std::size_t most_samples() const { return m_window.size() / 2 * (most_stretches + 1); }

    // The density, in the samples' unit times `scale`, by the root of a hertz, of the frequencies from 0 to
    // half the `rate`, the latter left out. Empty for less than one stretch.
    std::vector<float> of(std::span<const std::int16_t> samples, double scale, double rate) const;

private:
    static constexpr std::size_t most_stretches = 8;

    std::vector<double> m_window;
    double m_window_power = 0.0;
};

} // namespace Pelgar::ORBE::view
