#include "pictures/Power_Spectrum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Pelgar::ORBE::view {

TEST(Power_Spectrum, HoldsThePowerOfATone) {
    constexpr double rate = 30'000.0;
    constexpr double amplitude = 300.0;
    const Power_Spectrum spectrum(2048);
    std::vector<std::int16_t> samples(spectrum.most_samples());
    for (std::size_t sample = 0; sample < samples.size(); ++sample) {
        const double turns = 80.0 * static_cast<double>(sample) / 2048.0;
        samples[sample] = static_cast<std::int16_t>(
            std::lround(100 + amplitude * std::sin(2.0 * std::numbers::pi * turns)));
    }
    const auto density = spectrum.of(samples, 2.0, rate);
    ASSERT_EQ(density.size(), 1024U);
    EXPECT_EQ(std::max_element(density.begin(), density.end()) - density.begin(), 80);
    double power = 0.0;
    for (const float value : density) {
        power += static_cast<double>(value) * static_cast<double>(value) * rate / 2048.0;
    }
    const double expected = amplitude * 2.0 / std::numbers::sqrt2;
    EXPECT_NEAR(std::sqrt(power), expected, expected * 0.01);
}

TEST(Power_Spectrum, NeedsAWholeStretch) {
    const Power_Spectrum spectrum(1024);
    EXPECT_TRUE(spectrum.of(std::vector<std::int16_t>(1023), 1.0, 2500.0).empty());
    EXPECT_EQ(spectrum.of(std::vector<std::int16_t>(1024), 1.0, 2500.0).size(), 512U);
}

} // namespace Pelgar::ORBE::view
