#include "self_test/Frequency_Check.h"

#include "common/Console.h"
#include "self_test/Fast_Fourier.h"
#include "self_test/L2_Sample_Accumulator.h"

#include <complex>
#include <vector>

namespace Pelgar::ORBE {

namespace {

constexpr double ap_sample_period_us = 33.0;
constexpr double lowest_frequency = 1150.0;  // Hz
constexpr double highest_frequency = 1300.0; // Hz
constexpr double us_per_second = 1e6;

} // namespace

bool check_frequencies(const L2_Sample_Accumulator& samples, std::size_t n) {
    std::vector<std::complex<double>> spectrum(n);
    bool passed = true;
    for (std::size_t channel = 0; channel < demux::channel_count; ++channel) {
        if (!samples.copy_ap_channel(channel, spectrum.data(), n)) {
            return false;
        }
        const auto count = static_cast<double>(n);
        fast_fourier(spectrum.data(), count);
        double magnitude = 0.0;
        const unsigned bin = peek_search(spectrum.data(), static_cast<unsigned>(n), &magnitude);
        const double frequency = bin / (count * ap_sample_period_us) * us_per_second;
        console::out("Current pixel : ", channel, ", peek frq = ", frequency, " Hz",
                     " , peek mag : ", magnitude, '\n');
        // So that what is no number, as with no samples, fails.
        if (!(frequency >= lowest_frequency && frequency <= highest_frequency)) {
            console::out("Frq check failed\n");
            passed = false;
        }
    }
    return passed;
}

} // namespace Pelgar::ORBE
