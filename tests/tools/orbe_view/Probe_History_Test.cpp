// What a probe's and the inputs' packets leave in the histories, with the numbers that their stamps stand
// for.
#include "history/Histories.h"
#include "sources/Packet_Intake.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace Pelgar::ORBE::view {

namespace {

// Stamps count 100 kHz, rounded down.
std::uint32_t stamp_of(std::uint64_t sample) {
    return static_cast<std::uint32_t>(sample * 10 / 3);
}

std::int16_t ap_value(std::uint64_t sample, std::size_t channel) {
    return static_cast<std::int16_t>((sample * 7 + channel) % 1000) - 500;
}

std::int16_t lfp_value(std::uint64_t sample, std::size_t channel) {
    return static_cast<std::int16_t>((sample * 3 + channel) % 900) - 450;
}

// Twelve samples from `first` on, of which those from `gap_at` on come `gap` later.
Neuropixels::electrodePacket packet_of(std::uint64_t first, std::size_t gap_at = 12, std::uint64_t gap = 0) {
    Neuropixels::electrodePacket packet{};
    for (std::size_t row = 0; row < NP1_PROBE_SUPERFRAMESIZE; ++row) {
        const std::uint64_t sample = first + row + (row >= gap_at ? gap : 0);
        packet.timestamp[row] = stamp_of(sample);
        for (std::size_t channel = 0; channel < recorder::channel_count; ++channel) {
            packet.apData[row][channel] = ap_value(sample, channel);
        }
    }
    for (std::size_t channel = 0; channel < recorder::channel_count; ++channel) {
        packet.lfpData[channel] = lfp_value(first / 12, channel);
    }
    return packet;
}

Extent extent_at(const Stream_History& stream, std::uint64_t number, std::size_t value) {
    std::vector<Extent> extent(1);
    stream.extents({number, 1, 1}, value, 1, extent);
    return extent[0];
}

Extent one(std::int16_t value) {
    return {value, value};
}

class Intake : public testing::Test {
protected:
    void take(std::vector<Neuropixels::electrodePacket> packets) { intake.take(probe(), packets); }

    Probe_History& probe() { return histories->probe(0); }

    std::unique_ptr<Histories> histories =
        std::make_unique<Histories>(std::vector<recorder::Probe_Description>{recorder::default_probe(3)},
                                    true, 5.0, 100.0, std::vector<int>{0, 17, 383});
    Packet_Intake intake{1200};
};

} // namespace

TEST_F(Intake, PutsEachSampleAtItsNumber) {
    take({packet_of(0), packet_of(12)});
    take({packet_of(24)});
    EXPECT_EQ(intake.end(), 1236U);
    const Probe_History::Reading reading(probe());
    for (const std::size_t channel : {0U, 17U, 383U}) {
        for (std::uint64_t sample = 0; sample < 36; ++sample) {
            ASSERT_EQ(extent_at(reading.band(Band::ap), 1200 + sample, channel),
                      one(ap_value(sample, channel)));
        }
        for (std::uint64_t sample = 0; sample < 3; ++sample) {
            ASSERT_EQ(extent_at(reading.band(Band::lfp), 100 + sample, channel),
                      one(lfp_value(sample, channel)));
        }
    }
    EXPECT_EQ(reading.samples(), 36U);
    EXPECT_EQ(reading.lost_samples(), 0U);
}

TEST_F(Intake, LeavesOutWhatTheStampsLeaveOut) {
    take({packet_of(0), packet_of(12, 5, 30), packet_of(54 + 120)});
    const Probe_History::Reading reading(probe());
    const Stream_History& ap = reading.band(Band::ap);
    EXPECT_EQ(extent_at(ap, 1200 + 16, 17), one(ap_value(16, 17)));
    EXPECT_TRUE(extent_at(ap, 1200 + 17, 17).is_empty());
    EXPECT_TRUE(extent_at(ap, 1200 + 46, 17).is_empty());
    EXPECT_EQ(extent_at(ap, 1200 + 47, 17), one(ap_value(47, 17)));
    EXPECT_EQ(reading.lost_samples(), 30U + 120U);
    EXPECT_EQ(reading.different_lost_samples(), 150U);
    EXPECT_EQ(reading.samples(), 36U);
    EXPECT_EQ(reading.band(Band::lfp).end(), 100U + 174 / 12 + 1);
    EXPECT_TRUE(extent_at(reading.band(Band::lfp), 105, 17).is_empty());
}

TEST_F(Intake, RefusesASampleThatComesTwice) {
    auto packet = packet_of(0);
    packet.timestamp[3] = packet.timestamp[2];
    EXPECT_THROW(take({packet}), std::invalid_argument);
}

TEST_F(Intake, TakesTheInputsAndTheLinesBehindThem) {
    constexpr std::size_t width = Packet_Intake::adc_row_length;
    std::vector<Neuropixels::PacketInfo> infos;
    std::vector<std::int16_t> rows;
    for (const std::uint64_t sample : {0U, 1U, 5U}) {
        infos.push_back({stamp_of(sample), 0, width});
        for (std::size_t column = 0; column < width; ++column) {
            rows.push_back(static_cast<std::int16_t>(100 * sample + column));
        }
    }
    intake.take(*histories->adc(), infos, rows);
    EXPECT_EQ(intake.end(), 1206U);
    const ADC_History::Reading reading(*histories->adc());
    EXPECT_EQ(extent_at(reading.stream(), 1200, 7), one(7));
    EXPECT_EQ(extent_at(reading.stream(), 1201, 0), one(100));
    EXPECT_EQ(extent_at(reading.stream(), 1205, ADC_History::analog_inputs), one(500 + 12 + 8));
    EXPECT_EQ(extent_at(reading.stream(), 1205, ADC_History::width - 1), one(500 + 12 + 11));
    EXPECT_TRUE(extent_at(reading.stream(), 1203, 0).is_empty());
    EXPECT_EQ(reading.samples(), 3U);
    EXPECT_EQ(reading.lost_samples(), 3U);
}

TEST_F(Intake, IsOfChannelsThatAreThereWithTheirGains) {
    EXPECT_TRUE(probe().has(17));
    EXPECT_FALSE(probe().has(18));
    EXPECT_FLOAT_EQ(probe().scale(Band::ap, 17), 1.2e6F / 1024 / 500);
    EXPECT_FLOAT_EQ(probe().scale(Band::lfp, 17), 1.2e6F / 1024 / 250);
    EXPECT_EQ(histories->probe_on(3), &probe());
    EXPECT_EQ(histories->probe_on(1), nullptr);
    EXPECT_FLOAT_EQ(histories->adc()->scale(), 5.0F / 32768);
}

TEST_F(Intake, ForgetsButForItsCounts) {
    take({packet_of(0), packet_of(24)});
    histories->clear();
    {
        const Probe_History::Reading reading(probe());
        EXPECT_TRUE(extent_at(reading.band(Band::ap), 1200, 17).is_empty());
        EXPECT_EQ(reading.samples(), 24U);
        EXPECT_EQ(reading.lost_samples(), 12U);
    }
    Packet_Intake again(1200);
    again.take(probe(), std::vector{packet_of(0), packet_of(24)});
    EXPECT_EQ(Probe_History::Reading(probe()).lost_samples(), 24U);
    EXPECT_EQ(histories->lost_samples(), 12U);
    histories->begin_anew();
    again = Packet_Intake(1200);
    again.take(probe(), std::vector{packet_of(0), packet_of(24)});
    EXPECT_EQ(histories->lost_samples(), 24U);
}

} // namespace Pelgar::ORBE::view
