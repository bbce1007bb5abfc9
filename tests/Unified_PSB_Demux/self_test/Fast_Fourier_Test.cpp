// The Fourier transform, the search for its highest bin, and the sample files.
#include "self_test/Fast_Fourier.h"

#include "Captured_Output.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <fstream>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using test::captured_output;
using Samples = std::vector<std::complex<double>>;

Samples transformed(Samples samples) {
    fast_fourier(samples.data(), static_cast<double>(samples.size()));
    return samples;
}

Samples by_definition(const Samples& samples) {
    Samples bins(samples.size());
    for (std::size_t k = 0; k < bins.size(); ++k) {
        for (std::size_t j = 0; j < samples.size(); ++j) {
            bins[k] += samples[j] * std::polar(1.0, 2.0 * std::numbers::pi * static_cast<double>(j * k) /
                                                        static_cast<double>(samples.size()));
        }
    }
    return bins;
}

void expect_near(const Samples& actual, const Samples& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_LT(std::abs(actual[i] - expected[i]), tolerance) << "bin " << i;
    }
}

TEST(Fast_Fourier, OnePointAndNoPointStayAsTheyAre) {
    Samples samples{{3.0, 4.0}};
    fast_fourier(samples.data(), 1.0);
    EXPECT_EQ(samples, (Samples{{3.0, 4.0}}));
    fast_fourier(nullptr, 0.0);
}

TEST(Fast_Fourier, TwoPointsAreSumAndDifference) {
    EXPECT_EQ(transformed({{1.0, 2.0}, {10.0, -1.0}}), (Samples{{11.0, 1.0}, {-9.0, 3.0}}));
}

TEST(Fast_Fourier, FourPointsTurnWithAPositiveExponent) {
    expect_near(transformed({0.0, 1.0, 0.0, 0.0}), {1.0, {0.0, 1.0}, -1.0, {0.0, -1.0}}, 1e-12);
}

TEST(Fast_Fourier, EverySizeAgreesWithTheDefinition) {
    for (std::size_t n = 1; n <= 256; n *= 2) {
        Samples samples(n);
        for (std::size_t i = 0; i < n; ++i) {
            const auto x = static_cast<double>(i);
            samples[i] = {std::fmod(x * 37.0, 11.0) - 5.0, std::fmod(x * x, 7.0)};
        }
        expect_near(transformed(samples), by_definition(samples), 1e-9);
    }
}

TEST(Fast_Fourier, SineHasItsAmplitudeInItsBin) {
    constexpr unsigned n = 1024;
    for (const unsigned bin : {1U, 40U, 511U}) {
        Samples samples(n);
        for (unsigned i = 0; i < n; ++i) {
            samples[i] = 512.0 + 300.0 * std::sin(2.0 * std::numbers::pi * bin * i / n + 0.7);
        }
        const Samples spectrum = transformed(samples);
        double magnitude = 0.0;
        EXPECT_EQ(peek_search(spectrum.data(), n, &magnitude), bin);
        EXPECT_NEAR(magnitude, 300.0, 1e-6);
    }
}

TEST(Peek_Search, LooksAtTheBinsFromOneToBelowTheMiddle) {
    // Bins 0, 4 and above hold more than the largest one between.
    const Samples spectrum{100.0, 1.0, 3.0, 2.0, 100.0, 100.0, 100.0, 100.0};
    double magnitude = 0.0;
    EXPECT_EQ(peek_search(spectrum.data(), 8, &magnitude), 2U);
    EXPECT_DOUBLE_EQ(magnitude, 2.0 * 3.0 / 8.0);
}

TEST(Peek_Search, FirstOfEqualBinsStays) {
    const Samples spectrum{0.0, 1.0, {0.0, 3.0}, 3.0, 0.0, 0.0, 0.0, 0.0};
    EXPECT_EQ(peek_search(spectrum.data(), 8, nullptr), 2U);
    const Samples nothing(8);
    double magnitude = -1.0;
    EXPECT_EQ(peek_search(nothing.data(), 8, &magnitude), 1U);
    EXPECT_EQ(magnitude, 0.0);
}

TEST(Peek_Search, WithoutBinsToLookAtItAnswersZero) {
    const Samples spectrum{1.0, 2.0, 3.0};
    for (unsigned n = 0; n < 4; ++n) {
        double magnitude = -1.0;
        EXPECT_EQ(peek_search(spectrum.data(), n, &magnitude), 0U);
        EXPECT_EQ(magnitude, 0.0);
    }
}

TEST(Print_Magnitudes, PrintsTheAmplitudeOfEveryBinBelowTheMiddle) {
    const Samples spectrum{8.0, {3.0, 4.0}, 0.0, 1.0, 9.0, 9.0, 9.0, 9.0};
    std::ostringstream text;
    print_magnitudes(text, spectrum.data(), 8);
    EXPECT_EQ(text.str(), "0 2\n1 1.25\n2 0\n3 0.25\n");
}

class Sample_File : public testing::Test {
protected:
    static void write(const std::string& text) { std::ofstream("samples.txt") << text; }

    static std::string errors_of(const Samples& samples, unsigned n, const char* path, bool result) {
        Samples target = samples;
        const auto printed =
            captured_output([&] { EXPECT_EQ(load_sample_data_from_file(target.data(), n, path), result); });
        EXPECT_EQ(printed.out, "");
        return printed.err;
    }
};

TEST_F(Sample_File, NumbersBecomeRealParts) {
    write("1 2.5\n\t-3e2\n");
    Samples samples(3, {9.0, 9.0});
    const auto printed =
        captured_output([&] { EXPECT_TRUE(load_sample_data_from_file(samples.data(), 3, "samples.txt")); });
    EXPECT_EQ(printed.out + printed.err, "");
    EXPECT_EQ(samples, (Samples{1.0, 2.5, -300.0}));
}

TEST_F(Sample_File, WhatFollowsTheLastNumberIsNotLookedAt) {
    write("1 2 three");
    EXPECT_EQ(errors_of(Samples(2), 2, "samples.txt", true), "");
}

TEST_F(Sample_File, MissingFileIsReported) {
    EXPECT_EQ(errors_of(Samples(2), 2, "missing.txt", false), "File open error\n");
    EXPECT_EQ(errors_of(Samples(2), 2, nullptr, false), "File open error\n");
    EXPECT_EQ(errors_of(Samples(2), 2, ".", false), "File open error\n") << "a directory is no file";
}

TEST_F(Sample_File, TooFewNumbersAreReported) {
    write("1 2");
    EXPECT_EQ(errors_of(Samples(3), 3, "samples.txt", false), "File parse error\n");
    write("1 two 3");
    EXPECT_EQ(errors_of(Samples(3), 3, "samples.txt", false), "File parse error\n");
    write("");
    EXPECT_EQ(errors_of(Samples(1), 1, "samples.txt", false), "File parse error\n");
}

TEST_F(Sample_File, NoNumbersAreReadAtOnce) {
    write("");
    EXPECT_EQ(errors_of({}, 0, "samples.txt", true), "");
}

} // namespace
