#include "pictures/Power_Spectrum.h"

#include "self_test/Fast_Fourier.h"

#include <cmath>
#include <complex>
#include <numbers>

namespace Pelgar::ORBE::view {

Power_Spectrum::Power_Spectrum(std::size_t length) : m_window(length) {
    for (std::size_t place = 0; place < length; ++place) {
        const double turn = static_cast<double>(place) / static_cast<double>(length);
        m_window[place] = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * turn);
        m_window_power += m_window[place] * m_window[place];
    }
}

std::vector<float> Power_Spectrum::of(std::span<const std::int16_t> samples, double scale,
                                      double rate) const {
    const std::size_t length = m_window.size();
    if (samples.size() < length) {
        return {};
    }
    std::vector<double> power(length / 2);
    std::vector<std::complex<double>> bins(length);
    std::size_t stretches = 0;
    for (std::size_t begin = 0; begin + length <= samples.size(); begin += length / 2, ++stretches) {
        const auto stretch = samples.subspan(begin, length);
        double mean = 0.0;
        for (const std::int16_t sample : stretch) {
            mean += sample;
        }
        mean /= static_cast<double>(length);
        for (std::size_t place = 0; place < length; ++place) {
            bins[place] = (stretch[place] - mean) * m_window[place];
        }
        fast_fourier(bins.data(), static_cast<double>(length));
        for (std::size_t bin = 0; bin < power.size(); ++bin) {
            power[bin] += std::norm(bins[bin]);
        }
    }
    std::vector<float> density(power.size());
    const double factor = 2.0 * scale * scale / (m_window_power * rate * static_cast<double>(stretches));
    for (std::size_t bin = 0; bin < power.size(); ++bin) {
        density[bin] = static_cast<float>(std::sqrt(power[bin] * factor));
    }
    return density;
}

} // namespace Pelgar::ORBE::view
