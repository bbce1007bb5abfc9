// The Fourier transform beside that of FFTW.
#include "self_test/Fast_Fourier.h"

#include <fftw3.h>
#include <gtest/gtest.h>

#include <complex>
#include <random>
#include <vector>

namespace {

using Samples = std::vector<std::complex<double>>;

// FFTW's backward transform is the one with the positive exponent, not scaled either.
Samples by_library(Samples samples) {
    auto* const data = reinterpret_cast<fftw_complex*>(samples.data());
    fftw_plan plan =
        fftw_plan_dft_1d(static_cast<int>(samples.size()), data, data, FFTW_BACKWARD, FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    return samples;
}

TEST(Fast_Fourier_Library, EverySizeAgreesWithTheLibrary) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> sample(-1000.0, 1000.0);
    for (std::size_t n = 1; n <= 65536; n *= 2) {
        Samples samples(n);
        for (auto& value : samples) {
            value = {sample(random), sample(random)};
        }
        const Samples expected = by_library(samples);
        Pelgar::ORBE::fast_fourier(samples.data(), static_cast<double>(n));
        double largest = 0.0;
        double difference = 0.0;
        for (std::size_t k = 0; k < n; ++k) {
            largest = std::max(largest, std::abs(expected[k]));
            difference = std::max(difference, std::abs(samples[k] - expected[k]));
        }
        EXPECT_GT(largest, 0.0);
        EXPECT_LT(difference, 1e-10 * largest) << "n = " << n;
    }
}

} // namespace
