// The record lists of the signal test, and their dumps.
#include "self_test/L2_Sample_Accumulator.h"

#include "Invalid_Subscript.h"
#include "self_test/Fast_Fourier.h"

#include <gtest/gtest.h>

#include <array>
#include <complex>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace {

using namespace Pelgar::ORBE;

std::string content_of(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class Accumulator : public testing::Test {
protected:
    // AP record r holds 1000 * r + channel, LFP record r one more.
    void publish(unsigned ap_records, unsigned lp_records) {
        std::uint16_t values[384];
        for (unsigned record = 0; record < std::max(ap_records, lp_records); ++record) {
            for (std::size_t channel = 0; channel < 384; ++channel) {
                values[channel] = static_cast<std::uint16_t>(1000 * record + channel);
            }
            if (record < ap_records) {
                m_samples.publish_ap_ch_data(values);
            }
            for (std::uint16_t& value : values) {
                ++value;
            }
            if (record < lp_records) {
                m_samples.publish_lp_ch_data(values);
            }
        }
    }

    L2_Sample_Accumulator m_samples;
};

TEST_F(Accumulator, BandsAreKeptApartInTheirOrder) {
    publish(3, 2);
    EXPECT_EQ(m_samples.ap_record_count(), 3U);
    EXPECT_EQ(m_samples.lp_record_count(), 2U);
    const auto ap = m_samples.ap_records();
    const auto lp = m_samples.lp_records();
    ASSERT_EQ(ap.size(), 3U);
    ASSERT_EQ(lp.size(), 2U);
    for (std::size_t channel = 0; channel < 384; ++channel) {
        EXPECT_EQ(ap[0][channel], channel);
        EXPECT_EQ(ap[2][channel], 2000 + channel);
        EXPECT_EQ(lp[1][channel], 1001 + channel);
    }
}

TEST_F(Accumulator, RecordsAreCopies) {
    std::uint16_t values[384] = {5};
    m_samples.publish_ap_ch_data(values);
    values[0] = 6;
    EXPECT_EQ(m_samples.ap_records().front()[0], 5);
}

TEST_F(Accumulator, ClearingEmptiesBothLists) {
    publish(3, 2);
    m_samples.clear();
    EXPECT_EQ(m_samples.ap_record_count(), 0U);
    EXPECT_EQ(m_samples.lp_record_count(), 0U);
    publish(1, 0);
    EXPECT_EQ(m_samples.ap_record_count(), 1U);
}

TEST_F(Accumulator, ChannelIsCopiedAsRealNumbers) {
    publish(3, 0);
    std::array<std::complex<double>, 3> samples;
    samples.fill({-1.0, -1.0});
    ASSERT_TRUE(m_samples.copy_ap_channel(383, samples.data(), 2));
    EXPECT_EQ(samples[0], std::complex<double>(383.0, 0.0));
    EXPECT_EQ(samples[1], std::complex<double>(1383.0, 0.0));
    EXPECT_EQ(samples[2], std::complex<double>(-1.0, -1.0));
}

TEST_F(Accumulator, ChannelWithTooFewRecordsIsNotCopied) {
    publish(2, 9);
    std::array<std::complex<double>, 3> samples{};
    EXPECT_FALSE(m_samples.copy_ap_channel(1, samples.data(), 3));
    EXPECT_EQ(samples[0], 0.0);
    EXPECT_TRUE(m_samples.copy_ap_channel(1, samples.data(), 2));
}

TEST_F(Accumulator, DumpsAreTextFilesNamedByBandAndChannel) {
    publish(3, 2);
    EXPECT_TRUE(m_samples.dump_ap_channel("dump", 17));
    EXPECT_TRUE(m_samples.dump_lp_channel("dump", 0));
    EXPECT_EQ(content_of("dump_ap_17.txt"), "17\n1017\n2017\n");
    EXPECT_EQ(content_of("dump_lp_0.txt"), "1\n1001\n");
}

TEST_F(Accumulator, DumpReplacesAnOlderOneAndMayBeEmpty) {
    publish(3, 0);
    EXPECT_TRUE(m_samples.dump_ap_channel("dump", 5));
    m_samples.clear();
    EXPECT_TRUE(m_samples.dump_ap_channel("dump", 5));
    EXPECT_TRUE(std::filesystem::exists("dump_ap_5.txt"));
    EXPECT_EQ(content_of("dump_ap_5.txt"), "");
}

TEST_F(Accumulator, DumpCanBeReadBackAsSamples) {
    publish(4, 0);
    ASSERT_TRUE(m_samples.dump_ap_channel("dump", 200));
    std::array<std::complex<double>, 4> read;
    std::array<std::complex<double>, 4> direct;
    ASSERT_TRUE(load_sample_data_from_file(read.data(), 4, "dump_ap_200.txt"));
    ASSERT_TRUE(m_samples.copy_ap_channel(200, direct.data(), 4));
    EXPECT_EQ(read, direct);
}

TEST_F(Accumulator, DumpThatCannotBeWrittenFails) {
    publish(1, 1);
    EXPECT_FALSE(m_samples.dump_ap_channel("nowhere/dump", 0));
    EXPECT_FALSE(m_samples.dump_lp_channel("nowhere/dump", 0));
}

TEST_F(Accumulator, ChannelsThatDoNotExistThrow) {
    std::complex<double> sample;
    test::expect_invalid_subscript([&] { m_samples.copy_ap_channel(384, &sample, 0); });
    test::expect_invalid_subscript([&] { m_samples.dump_ap_channel("dump", 384); });
    test::expect_invalid_subscript([&] { m_samples.dump_lp_channel("dump", 384); });
}

} // namespace
