#include "Sample_Counter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using namespace Pelgar::ORBE::recorder;
using Neuropixels::electrodePacket;
using Neuropixels::PacketInfo;

std::uint32_t stamp_of(std::uint64_t sample) {
    return static_cast<std::uint32_t>(sample * 10 / 3);
}

electrodePacket packet_from(std::uint64_t sample) {
    electrodePacket packet{};
    for (std::uint64_t row = 0; row < 12; ++row) {
        packet.timestamp[row] = stamp_of(sample + row);
    }
    return packet;
}

Recording_Description two_probes(std::uint64_t first_sample = 0) {
    Recording_Description description;
    description.first_sample = first_sample;
    description.probes = {default_probe(1), default_probe(3)};
    description.adc.emplace();
    return description;
}

void write(Sample_Counter& counter, std::size_t probe, const std::vector<std::uint64_t>& samples) {
    for (const std::uint64_t sample : samples) {
        const electrodePacket packet = packet_from(sample);
        counter.write_probe(probe, {&packet, 1});
    }
}

TEST(Sample_Counter, CountsEachStreamByItself) {
    Sample_Counter counter(two_probes());
    ASSERT_EQ(counter.stream_count(), 3U);
    write(counter, 0, {0, 12, 24});
    write(counter, 1, {0, 12});
    const std::vector<PacketInfo> infos{{stamp_of(0), 0, 0}, {stamp_of(1), 0, 0}};
    const std::vector<std::int16_t> rows(2 * adc_row_length);
    counter.write_adc(infos, rows);
    EXPECT_EQ(counter.samples(0), 36U);
    EXPECT_EQ(counter.samples(1), 24U);
    EXPECT_EQ(counter.samples(2), 2U);
    for (std::size_t stream = 0; stream < 3; ++stream) {
        EXPECT_EQ(counter.lost_samples(stream), 0U);
    }
}

TEST(Sample_Counter, StepsOfTheStampsAreLost) {
    Sample_Counter counter(two_probes());
    write(counter, 0, {0, 24, 41});
    EXPECT_EQ(counter.samples(0), 53U);
    EXPECT_EQ(counter.lost_samples(0), 12U + 5U);
}

TEST(Sample_Counter, BeginningOfTheFirstPacketIsNotLost) {
    Sample_Counter counter(two_probes());
    write(counter, 0, {11, 23});
    EXPECT_EQ(counter.lost_samples(0), 0U);
    write(counter, 1, {12});
    EXPECT_EQ(counter.lost_samples(1), 12U);
}

TEST(Sample_Counter, WhatComesBeforeTheFirstSampleDoesNotCount) {
    Sample_Counter counter(two_probes(24));
    write(counter, 0, {0, 12, 24, 36});
    EXPECT_EQ(counter.samples(0), 24U);
    EXPECT_EQ(counter.lost_samples(0), 0U);
}

} // namespace
