// The comparison with the probe's test pattern.
#include "self_test/PSB_L2_Tester.h"

#include "Captured_Output.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Pelgar::ORBE;
using test::captured_output;

class PSB_Tester : public testing::Test {
protected:
    PSB_Tester() {
        for (std::size_t channel = 0; channel < 384; ++channel) {
            m_values[channel] = channel % 2 == 0 ? 0x155 : 0x2AA;
        }
    }

    test::Captured_Output publish() {
        return captured_output([&] { m_tester.publish_ap_ch_data(m_values); });
    }

    PSB_L2_Tester m_tester;
    std::uint16_t m_values[384];
};

TEST_F(PSB_Tester, NothingIsCountedAtFirst) {
    EXPECT_EQ(m_tester.successful_comparison_count(), 0U);
    EXPECT_EQ(m_tester.failed_comparison_count(), 0U);
    EXPECT_TRUE(m_tester.last_comparison_succeeded());
    EXPECT_TRUE(m_tester.all_comparisons_succeeded());
}

TEST_F(PSB_Tester, PatternIsASuccessAndPrintsNothing) {
    const auto printed = publish();
    EXPECT_EQ(printed.out + printed.err, "");
    EXPECT_EQ(m_tester.successful_comparison_count(), 1U);
    EXPECT_EQ(m_tester.failed_comparison_count(), 0U);
}

TEST_F(PSB_Tester, LastChannelAloneIsReportedAndCountsOneFailure) {
    m_values[383] = 0x155;
    const auto printed = publish();
    EXPECT_EQ(printed.err, "PSB test ch_data compare failed at : 383\n");
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(m_tester.failed_comparison_count(), 1U);
    EXPECT_EQ(m_tester.successful_comparison_count(), 0U);
}

TEST_F(PSB_Tester, EveryChannelIsCompared) {
    for (std::size_t channel = 0; channel < 384; ++channel) {
        m_values[channel] ^= 0x200;
        EXPECT_EQ(publish().err, "PSB test ch_data compare failed at : " + std::to_string(channel) + '\n');
        m_values[channel] ^= 0x200;
    }
    EXPECT_EQ(m_tester.failed_comparison_count(), 384U);
}

TEST_F(PSB_Tester, ComparisonStopsAtTheFirstChannelThatDiffers) {
    m_values[7] = 0;
    m_values[6] = 0;
    m_values[100] = 0;
    EXPECT_EQ(publish().err, "PSB test ch_data compare failed at : 6\n");
    EXPECT_EQ(m_tester.failed_comparison_count(), 1U);
}

TEST_F(PSB_Tester, ExchangedPatternsFailAtTheFirstChannel) {
    for (std::uint16_t& value : m_values) {
        value ^= 0x3FF;
    }
    EXPECT_EQ(publish().err, "PSB test ch_data compare failed at : 0\n");
}

TEST_F(PSB_Tester, RemembersWhetherItEverFailed) {
    m_values[0] = 0;
    publish();
    EXPECT_FALSE(m_tester.last_comparison_succeeded());
    m_values[0] = 0x155;
    publish();
    EXPECT_TRUE(m_tester.last_comparison_succeeded());
    EXPECT_FALSE(m_tester.all_comparisons_succeeded());
    EXPECT_EQ(m_tester.successful_comparison_count(), 1U);
    EXPECT_EQ(m_tester.failed_comparison_count(), 1U);
}

TEST_F(PSB_Tester, LFPBandIsNotLookedAt) {
    m_values[0] = 0;
    const auto printed = captured_output([&] { m_tester.publish_lp_ch_data(m_values); });
    EXPECT_EQ(printed.out + printed.err, "");
    EXPECT_EQ(m_tester.failed_comparison_count() + m_tester.successful_comparison_count(), 0U);
}

} // namespace
