// Pictures of a source whose every sample is known, taken apart as a page takes them apart.
#include "pictures/Picture_Maker.h"

#include "Taken_Picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>

namespace Pelgar::ORBE::view {

namespace {

using test::Taken_Picture;

constexpr double rate = recorder::ap_sample_rate;

std::int16_t ramp(std::size_t channel, std::uint64_t sample) {
    return static_cast<std::int16_t>((sample + channel * 3) % 1024) - 512;
}

class Known_Source final : public A_Source {
public:
    explicit Known_Source(const std::vector<int>& channels = {})
        : m_histories({recorder::default_probe(2)}, true, 5.0, 100.0, channels) {}

    const Histories& histories() const override { return m_histories; }

    Source_Status status() const override {
        Source_Status status;
        status.name = "known";
        status.kind = "recording";
        status.position = position;
        status.length = 2.0;
        return status;
    }

    std::vector<Damage_Counts> damage(std::size_t stretches) const override {
        std::vector<Damage_Counts> damage(stretches);
        damage[stretches / 4] = {1, 2, 3, 4, 5};
        return damage;
    }

    void append(std::uint64_t begin, std::uint64_t end) {
        std::vector<std::int16_t> row(recorder::channel_count);
        for (std::uint64_t sample = begin; sample < end; ++sample) {
            for (std::size_t channel = 0; channel < row.size(); ++channel) {
                row[channel] = ramp(channel, sample);
            }
            probe().append(Band::ap, sample, row);
        }
        position = end;
    }

    Probe_History& probe() { return m_histories.probe(0); }

    ADC_History& adc() { return *m_histories.adc(); }

    Health_History& health() { return m_histories.health(); }

    std::atomic<std::uint64_t> position{0};

private:
    Histories m_histories;
};

View_Request of_port_2() {
    View_Request request;
    request.port = 2;
    return request;
}

} // namespace

TEST(Picture_Maker, ShowsEveryLaneOfTheWidestPicture) {
    constexpr std::uint64_t end = 5'000;
    Known_Source source;
    source.append(0, end);
    source.probe().append_lost(Band::ap, end, 10);
    source.append(end + 10, end + 20);
    View_Request request = of_port_2();
    request.first_channel = 200;
    request.channel_count = View_Request::most_channels;
    request.columns = View_Request::most_columns;
    for (const double seconds : {1'999 / rate, 0.15, 30.0}) { // samples, some of them, milliseconds
        request.seconds = seconds;
        const Taken_Picture picture(Picture_Maker(source, false).make(request, 7, false));
        const auto& traces = picture.head().at("traces");
        const auto begin = std::llround(traces.at("begin").get<double>() * rate);
        const auto step = std::llround(traces.at("step").get<double>() * rate);
        const auto columns = picture.values("lost").size();
        const auto values = picture.values("traces");
        ASSERT_EQ(values.size(), 96 * columns * 2);
        std::uint64_t lost = 0;
        for (std::size_t column = 0; column < columns; ++column) {
            lost += static_cast<std::uint64_t>(picture.values("lost")[column]);
        }
        EXPECT_EQ(lost, 10U);
        for (std::size_t lane = 0; lane < 96; ++lane) {
            const float scale = source.probe().scale(Band::ap, 200 + lane);
            for (std::size_t column = 0; column < columns; ++column) {
                Extent expected;
                for (auto sample = begin + static_cast<long long>(column) * step;
                     sample < begin + static_cast<long long>(column + 1) * step; ++sample) {
                    const auto number = static_cast<std::uint64_t>(sample);
                    if (number < end || (number >= end + 10 && number < end + 20)) {
                        const std::int16_t value = ramp(200 + lane, number);
                        expected = {std::min(expected.low, value), std::max(expected.high, value)};
                    }
                }
                const std::size_t place = (lane * columns + column) * 2;
                if (expected.is_empty()) {
                    ASSERT_TRUE(std::isnan(values[place]) && std::isnan(values[place + 1]));
                } else {
                    ASSERT_EQ(values[place], static_cast<float>(expected.low) * scale)
                        << lane << " " << column;
                    ASSERT_EQ(values[place + 1], static_cast<float>(expected.high) * scale);
                }
            }
        }
    }
}

TEST(Picture_Maker, ShowsTheInputsInVoltsAndTheLinesAsTheyAre) {
    Known_Source source;
    std::vector<ADC_History::Row> rows(100);
    for (std::size_t place = 0; place < rows.size(); ++place) {
        rows[place].number = place;
        for (std::size_t lane = 0; lane < ADC_History::width; ++lane) {
            rows[place].values[lane] =
                static_cast<std::int16_t>(lane < ADC_History::analog_inputs ? 100 * lane + place : place % 2);
        }
    }
    source.adc().append(rows);
    source.adc().append_lost(100, 3);
    source.position = 103;
    View_Request request;
    request.stream = Shown_Stream::adc;
    request.seconds = 103 / rate;
    request.columns = 103;
    const Taken_Picture picture(Picture_Maker(source, false).make(request, 0, false));
    EXPECT_EQ(picture.head().at("traces").at("lost"), 3);
    const auto values = picture.values("traces");
    ASSERT_EQ(values.size(), ADC_History::width * 103 * 2);
    for (std::size_t lane = 0; lane < ADC_History::width; ++lane) {
        const bool is_analog = lane < ADC_History::analog_inputs;
        const auto volts = static_cast<float>(100 * lane + 57) * (5.0F / 32768);
        EXPECT_FLOAT_EQ(values[(lane * 103 + 57) * 2], is_analog ? volts : 1.0F) << lane;
        EXPECT_TRUE(std::isnan(values[(lane * 103 + 101) * 2])) << lane;
    }
}

TEST(Picture_Maker, TellsOfChannelsSpectrumHealthAndDamageInAWholePicture) {
    Known_Source source({3, 5});
    source.append(0, 9'300);
    Health health;
    health.seconds = 0.5;
    health.streams[1].rate = 30'000;
    source.health().add(health);
    View_Request request = of_port_2();
    request.selected = 5;
    Picture_Maker maker(source, true);
    const Taken_Picture picture(maker.make(request, 3, true));
    EXPECT_EQ(picture.head().at("number"), 3);
    const auto rms = picture.values("rms");
    ASSERT_EQ(rms.size(), recorder::channel_count);
    EXPECT_TRUE(std::isnan(rms[4])); // not in the recording
    EXPECT_NEAR(rms[5], 1024 / std::sqrt(12) * source.probe().scale(Band::ap, 5), 10);
    EXPECT_TRUE(std::isnan(picture.values("spikes")[4]));
    EXPECT_EQ(picture.values("spectrum").size(), 1024U);
    const auto& line = picture.head().at("health").at(0);
    EXPECT_EQ(line.at("seconds"), 0.5);
    EXPECT_EQ(line.at("streams").at(1).at(0), 30'000.0);
    EXPECT_TRUE(line.at("streams").at(1).at(1).is_null());
    EXPECT_EQ(picture.head().at("damage"), nlohmann::json::parse("[[0.25, 1, 2, 3, 4, 5]]"));

    request.selected = 4;
    EXPECT_TRUE(Taken_Picture(maker.make(request, 4, true)).values("spectrum").empty());
    EXPECT_FALSE(Taken_Picture(maker.make(request, 5, false)).head().contains("health"));
    request.port = 1; // no such probe
    EXPECT_FALSE(Taken_Picture(maker.make(request, 6, true)).head().contains("traces"));
}

TEST(Picture_Maker, IntroducesWhatThereIs) {
    const Known_Source source;
    const Taken_Picture picture(Picture_Maker(source, true).introduction());
    const auto& what = picture.head().at("introduction");
    EXPECT_EQ(what.at("name"), "known");
    EXPECT_EQ(what.at("may_control"), true);
    EXPECT_EQ(what.at("has_adc"), true);
    ASSERT_EQ(what.at("probes").size(), 1U);
    EXPECT_EQ(what.at("probes").at(0).at("port"), 2);
    EXPECT_EQ(what.at("probes").at(0).at("channels").size(), recorder::channel_count);
}

} // namespace Pelgar::ORBE::view
