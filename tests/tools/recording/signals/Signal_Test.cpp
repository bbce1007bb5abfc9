#include "signals/Channel_Signal.h"

#include "generator/Recording_Options.h"
#include "signals/Pattern_Signal.h"
#include "signals/Spike_Signal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <set>
#include <stdexcept>

namespace {

using namespace Pelgar::ORBE::recording;
using Values = std::array<std::uint16_t, channel_count>;

std::string refusal(const std::string& text) {
    try {
        parse_signal_choice(text);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "accepted";
}

// The amplitude of the tone with `turns` turns in the samples.
double amplitude(const std::vector<double>& samples, double turns) {
    std::complex<double> sum;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double part = static_cast<double>(i) / static_cast<double>(samples.size());
        sum += samples[i] * std::polar(1.0, -2.0 * std::numbers::pi * turns * part);
    }
    return 2.0 * std::abs(sum) / static_cast<double>(samples.size());
}

TEST(SignalChoice, NamesASignalForAllChannels) {
    const Signal_Choice choice = parse_signal_choice("spikes");
    EXPECT_EQ(choice.kind, Signal_Kind::spikes);
    EXPECT_EQ(choice.channels, every_channel());
    EXPECT_EQ(choice.channels.size(), 384U);
}

TEST(SignalChoice, NamesASignalForSomeChannels) {
    const Signal_Choice choice = parse_signal_choice("tone:383,2-4,3");
    EXPECT_EQ(choice.kind, Signal_Kind::tone);
    EXPECT_EQ(choice.channels, (std::vector<std::uint16_t>{2, 3, 4, 383}));
}

TEST(SignalChoice, RefusesWhatItCannotRead) {
    EXPECT_EQ(refusal("hum"), "unknown signal 'hum' (noise, tone, ramp, spikes or pattern)");
    EXPECT_EQ(refusal("tone:384"), "channel 384 is not one of 0 to 383");
    EXPECT_EQ(refusal("tone:5-3"), "channels '5-3' run backwards");
    EXPECT_EQ(refusal("tone:"), "channel '' is not a number");
    EXPECT_EQ(refusal("tone:1-"), "channel '' is not a number");
    EXPECT_EQ(refusal("tone:-1"), "channel '' is not a number");
    EXPECT_EQ(refusal("tone:1x"), "channel '1x' is not a number");
    EXPECT_EQ(refusal("tone:99999999999999999999"), "channel '99999999999999999999' is not a number");
}

TEST(ChannelSignal, TheToneIsInItsBinInBothBandsAndNowhereElse) {
    Channel_Signal signal({parse_signal_choice("tone")}, frequency_of_bin(40), 2, 1);
    for (const Band band : {Band::ap, Band::lfp}) {
        std::vector<double> samples;
        for (std::uint64_t i = 0; i < 1024; ++i) {
            Values values{};
            signal.fill(band, 5000 + i, values);
            samples.push_back(values[17]);
        }
        EXPECT_NEAR(amplitude(samples, 40), 300.0, 1.0);
        EXPECT_LT(amplitude(samples, 39), 1.0);
        EXPECT_LT(amplitude(samples, 41), 1.0);
    }
}

TEST(ChannelSignal, TheTonesPhaseTellsChannelsAndPortsApart) {
    Channel_Signal first({parse_signal_choice("tone")}, frequency_of_bin(40), 1, 1);
    Channel_Signal second({parse_signal_choice("tone")}, frequency_of_bin(40), 2, 1);
    Values one{};
    Values two{};
    first.fill(Band::ap, 0, one);
    second.fill(Band::ap, 0, two);
    EXPECT_EQ(one[0], 512);  // phase 0
    EXPECT_EQ(one[96], 812); // a quarter turn
    EXPECT_EQ(one[288], 212);
    EXPECT_NE(one, two);
}

TEST(ChannelSignal, TheRampGoesUpByOneASampleAndWraps) {
    Channel_Signal signal({parse_signal_choice("ramp")}, 0.0, 1, 1);
    Values values{};
    signal.fill(Band::ap, 1023, values);
    EXPECT_EQ(values[0], 1023);
    EXPECT_EQ(values[1], 0);
    signal.fill(Band::lfp, 10, values);
    EXPECT_EQ(values[5], 15);
    Channel_Signal third({parse_signal_choice("ramp")}, 0.0, 3, 1);
    third.fill(Band::ap, 0, values);
    EXPECT_EQ(values[0], 512);
}

TEST(ChannelSignal, ThePatternIsTheSelfTestPattern) {
    Channel_Signal signal({parse_signal_choice("pattern")}, 0.0, 1, 1);
    Values values{};
    signal.fill(Band::ap, 77, values);
    for (std::size_t channel = 0; channel < channel_count; ++channel) {
        ASSERT_EQ(values[channel], channel % 2 == 0 ? 0x155 : 0x2AA) << channel;
    }
}

TEST(ChannelSignal, NoiseUsesAllTenBitsAndDependsOnSeedPortBandAndSample) {
    std::set<std::uint16_t> seen;
    Channel_Signal signal({}, 0.0, 1, 1);
    Values values{};
    for (std::uint64_t i = 0; i < 100; ++i) {
        signal.fill(Band::ap, i, values);
        seen.insert(values.begin(), values.end());
    }
    EXPECT_EQ(seen.size(), 1024U);

    const auto sample = [](unsigned port, std::uint64_t seed, Band band, std::uint64_t number) {
        Channel_Signal noise({}, 0.0, port, seed);
        Values found{};
        noise.fill(band, number, found);
        return found;
    };
    const Values reference = sample(1, 1, Band::ap, 0);
    EXPECT_EQ(sample(1, 1, Band::ap, 0), reference);
    EXPECT_NE(sample(2, 1, Band::ap, 0), reference);
    EXPECT_NE(sample(1, 2, Band::ap, 0), reference);
    EXPECT_NE(sample(1, 1, Band::lfp, 0), reference);
    EXPECT_NE(sample(1, 1, Band::ap, 1), reference);
}

TEST(ChannelSignal, LaterChoicesWinAndTheRestIsNoise) {
    Channel_Signal mixed({parse_signal_choice("pattern:0-9"), parse_signal_choice("ramp:4")}, 0.0, 1, 1);
    Channel_Signal noise({}, 0.0, 1, 1);
    Values values{};
    Values expected{};
    mixed.fill(Band::ap, 300, values);
    noise.fill(Band::ap, 300, expected);
    for (std::size_t channel = 0; channel < 10; ++channel) {
        expected[channel] = channel % 2 == 0 ? Pattern_Signal::even_channel : Pattern_Signal::odd_channel;
    }
    expected[4] = 304;
    EXPECT_EQ(values, expected);
}

TEST(SpikeSignal, EveryChannelHasOneSpikeInEachWindowWhereItIsSaidToBe) {
    Spike_Signal signal(7);
    const std::vector<std::uint16_t> channels = {3, 200};
    for (std::uint64_t window = 0; window < 4; ++window) {
        std::array<std::vector<std::uint64_t>, 2> deep;
        for (std::uint64_t i = 0; i < Spike_Signal::window_samples; ++i) {
            Values values{};
            signal.fill(Band::ap, window * Spike_Signal::window_samples + i, channels, values);
            for (std::size_t k = 0; k < 2; ++k) {
                if (values[channels[k]] < 312) {
                    deep[k].push_back(i);
                }
            }
        }
        for (std::size_t k = 0; k < 2; ++k) {
            const std::uint64_t start = signal.spike_start(window, channels[k]);
            ASSERT_FALSE(deep[k].empty());
            EXPECT_GT(deep[k].front(), start);
            EXPECT_LT(deep[k].back(), start + 30);
        }
    }
}

TEST(SpikeSignal, TheLFPBandCarriesASlowWave) {
    Spike_Signal signal(7);
    std::vector<double> samples;
    for (std::uint64_t i = 0; i < 2500; ++i) { // one second
        Values values{};
        signal.fill(Band::lfp, i, every_channel(), values);
        samples.push_back(values[100]);
    }
    EXPECT_NEAR(amplitude(samples, 8), 120.0, 0.5);
}

} // namespace
