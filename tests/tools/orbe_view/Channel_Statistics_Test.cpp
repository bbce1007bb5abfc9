#include "history/Channel_Statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace Pelgar::ORBE::view {

namespace {

constexpr std::size_t second = recorder::ap_sample_rate;

std::unique_ptr<Channel_Statistics> statistics_with_threshold(float counts) {
    std::array<float, recorder::channel_count> thresholds{};
    thresholds.fill(counts);
    return std::make_unique<Channel_Statistics>(thresholds);
}

} // namespace

TEST(Channel_Statistics, AreThoseOfTheLastSecondAboutTheMean) {
    const auto statistics = statistics_with_threshold(1000);
    std::vector<std::int16_t> samples(recorder::channel_count);
    for (std::size_t sample = 0; sample < second; ++sample) {
        samples[0] = static_cast<std::int16_t>(sample % 2 == 0 ? 140 : 60);
        samples[383] = -511;
        statistics->add(samples);
    }
    EXPECT_NEAR(statistics->rms()[0], 40.0, 1e-3);
    EXPECT_NEAR(statistics->rms()[383], 0.0, 1e-3);
    for (std::size_t sample = 0; sample < second; ++sample) {
        samples[0] = 7;
        statistics->add(samples);
    }
    EXPECT_NEAR(statistics->rms()[0], 0.0, 1e-3);
}

// A probe sends ten bits, but the files of a folder may hold any sixteen.
TEST(Channel_Statistics, AreRightAtFullScaleAllTheTime) {
    const auto statistics = statistics_with_threshold(1000);
    std::vector<std::int16_t> samples(recorder::channel_count);
    for (std::size_t sample = 0; sample < second; ++sample) {
        const bool is_even = sample % 2 == 0;
        samples[0] = static_cast<std::int16_t>(is_even ? 511 : -512);
        samples[1] = static_cast<std::int16_t>(is_even ? 32'767 : -32'768);
        samples[2] = -32'768;
        statistics->add(samples);
    }
    EXPECT_NEAR(statistics->rms()[0], 511.5, 1e-2);
    EXPECT_NEAR(statistics->rms()[1], 32'767.5, 1e-2);
    EXPECT_NEAR(statistics->rms()[2], 0.0, 1e-2);
}

TEST(Channel_Statistics, CountFallsBelowTheThresholdAndEachOnce) {
    const auto statistics = statistics_with_threshold(50);
    std::vector<std::int16_t> samples(recorder::channel_count);
    for (std::size_t sample = 0; sample < second; ++sample) {
        const bool is_spike = sample % 1500 >= 700 && sample % 1500 < 710; // 20 a second
        samples[5] = static_cast<std::int16_t>(100 + (is_spike ? -60 : 0));
        samples[6] = static_cast<std::int16_t>(100 + (is_spike ? -45 : 0));
        statistics->add(samples);
    }
    // The first quarter of a second is counted from 0, below which nothing falls by 50.
    EXPECT_NEAR(statistics->spikes()[5], 15.0, 1e-6);
    EXPECT_EQ(statistics->spikes()[6], 0.0F);
    for (std::size_t sample = 0; sample < second; ++sample) {
        samples[5] = static_cast<std::int16_t>(sample % 1500 < 10 ? 40 : 100);
        statistics->add(samples);
    }
    EXPECT_NEAR(statistics->spikes()[5], 20.0, 1e-6);
}

TEST(Channel_Statistics, CountNoSpikeAcrossALoss) {
    const auto statistics = statistics_with_threshold(50);
    std::vector<std::int16_t> samples(recorder::channel_count);
    for (std::size_t sample = 0; sample < second; ++sample) {
        samples[0] = static_cast<std::int16_t>(sample % 100 < 50 ? 0 : -200);
        if (sample % 100 == 50) {
            statistics->skip();
        }
        statistics->add(samples);
    }
    EXPECT_EQ(statistics->spikes()[0], 0.0F);
}

} // namespace Pelgar::ORBE::view
