// The frequency check over 384 channels.
#include "self_test/Frequency_Check.h"

#include "Captured_Output.h"
#include "self_test/L2_Sample_Accumulator.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <sstream>
#include <string>

namespace {

using namespace Pelgar::ORBE;

constexpr std::size_t n = 1024;

class Frequency_Check : public testing::Test {
protected:
    // One record a sample, with the tone of each channel in its own bin around 512.
    void record(std::size_t count) {
        std::uint16_t values[384];
        for (std::size_t sample = 0; sample < count; ++sample) {
            for (std::size_t channel = 0; channel < 384; ++channel) {
                const double turns = static_cast<double>(m_bins[channel] * sample) / n;
                values[channel] = static_cast<std::uint16_t>(
                    std::lround(512.0 + 300.0 * std::sin(2.0 * std::numbers::pi * turns)));
            }
            m_samples.publish_ap_ch_data(values);
        }
    }

    // The lines of a check, which must have this result.
    std::string lines_of_check(bool result) const {
        const auto printed =
            test::captured_output([&] { EXPECT_EQ(check_frequencies(m_samples, n), result); });
        EXPECT_EQ(printed.err, "");
        return printed.out;
    }

    static std::string line(std::size_t channel, const std::string& frequency) {
        return "Current pixel : " + std::to_string(channel) + ", peek frq = " + frequency +
               " Hz , peek mag : ";
    }

    // Whether the printed lines are those of all channels with these frequencies; magnitudes are about 300.
    static void expect_lines(const std::string& printed, const std::array<std::string, 384>& frequencies,
                             const std::array<bool, 384>& failed) {
        std::istringstream lines(printed);
        std::string text;
        for (std::size_t channel = 0; channel < 384; ++channel) {
            ASSERT_TRUE(std::getline(lines, text));
            const std::string head = line(channel, frequencies[channel]);
            ASSERT_EQ(text.substr(0, head.size()), head);
            EXPECT_NEAR(std::stod(text.substr(head.size())), 300.0, 0.1);
            if (failed[channel]) {
                ASSERT_TRUE(std::getline(lines, text));
                EXPECT_EQ(text, "Frq check failed");
            }
        }
        EXPECT_FALSE(std::getline(lines, text));
    }

    void expect_all(std::size_t bin, const std::string& frequency, bool passes) {
        m_bins.fill(bin);
        record(n);
        std::array<std::string, 384> frequencies;
        frequencies.fill(frequency);
        std::array<bool, 384> failed;
        failed.fill(!passes);
        expect_lines(lines_of_check(passes), frequencies, failed);
    }

    std::array<std::size_t, 384> m_bins{};
    L2_Sample_Accumulator m_samples;
};

TEST_F(Frequency_Check, ToneInBin40Passes) {
    expect_all(40, "1183.71", true);
}

TEST_F(Frequency_Check, ToneInBin38Fails) {
    expect_all(38, "1124.53", false);
}

TEST_F(Frequency_Check, LowestBinWithinTheBandPasses) {
    expect_all(39, "1154.12", true);
}

TEST_F(Frequency_Check, HighestBinWithinTheBandPasses) {
    expect_all(43, "1272.49", true);
}

TEST_F(Frequency_Check, BinAboveTheBandFails) {
    expect_all(44, "1302.08", false);
}

TEST_F(Frequency_Check, OneChannelFailsTheCheckAndTheOthersAreStillLookedAt) {
    m_bins.fill(40);
    m_bins[5] = 20;
    record(n);
    std::array<std::string, 384> frequencies;
    frequencies.fill("1183.71");
    frequencies[5] = "591.856";
    std::array<bool, 384> failed{};
    failed[5] = true;
    expect_lines(lines_of_check(false), frequencies, failed);
}

TEST_F(Frequency_Check, LastChannelCountsToo) {
    m_bins.fill(40);
    m_bins[383] = 50;
    record(n);
    std::array<std::string, 384> frequencies;
    frequencies.fill("1183.71");
    frequencies[383] = "1479.64";
    std::array<bool, 384> failed{};
    failed[383] = true;
    expect_lines(lines_of_check(false), frequencies, failed);
}

TEST_F(Frequency_Check, RecordsBehindTheFirst1024AreNotUsed) {
    m_bins.fill(40);
    record(n);
    m_bins.fill(20);
    record(768);
    lines_of_check(true);
}

TEST_F(Frequency_Check, TooFewRecordsFail) {
    m_bins.fill(40);
    record(n - 1);
    EXPECT_EQ(lines_of_check(false), "");
}

TEST_F(Frequency_Check, NoSamplesFailOnEveryChannel) {
    record(1);
    const auto printed = test::captured_output([&] { EXPECT_FALSE(check_frequencies(m_samples, 0)); });
    std::istringstream lines(printed.out);
    std::size_t failed = 0;
    for (std::string text; std::getline(lines, text);) {
        failed += text == "Frq check failed" ? 1U : 0U;
    }
    EXPECT_EQ(failed, 384U);
}

} // namespace
