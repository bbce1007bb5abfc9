// What a setting does to the gain filter of the port.
#include "ports/Probe_Port.h"

#include "Gain_Calibration_File.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace {

using Pelgar::ORBE::Probe_Port;
using Pelgar::ORBE::demux::channel_count;
using Pelgar::ORBE::demux::I_L2_Demux_CH_Results;
using Pelgar::ORBE::test::Gain_Calibration_File;

struct Last_Values : I_L2_Demux_CH_Results {
    using Values = std::array<std::uint16_t, channel_count>;

    void publish_ap_ch_data(std::uint16_t (&values)[channel_count]) override { ap = std::to_array(values); }

    void publish_lp_ch_data(std::uint16_t (&values)[channel_count]) override { lfp = std::to_array(values); }

    Values ap{};
    Values lfp{};
};

class ProbePort : public testing::Test {
protected:
    // Factors from 1 to 24 tell bank and gain code apart.
    static std::uint16_t factor_of(std::size_t bank, std::size_t code) {
        return static_cast<std::uint16_t>(1 + 8 * bank + code);
    }

    ProbePort() {
        m_port.renew(nullptr);
        Gain_Calibration_File file;
        file.factor = [](std::size_t electrode, std::size_t k) {
            return std::to_string(factor_of(electrode / channel_count, k % 8));
        };
        file.write();
        EXPECT_TRUE(m_port.load_gain_calibration(file.path.c_str()));
        m_port.gain_filter()->set_listener(m_listener);
        m_ap.fill(factor_of(0, 0));
        m_lfp.fill(factor_of(0, 0));
    }

    // Sends ones through the filter and compares what comes out with the factors that are expected.
    void expect_factors() {
        std::uint16_t ap[channel_count];
        std::uint16_t lfp[channel_count];
        for (std::size_t channel = 0; channel < channel_count; ++channel) {
            ap[channel] = 1;
            lfp[channel] = 1;
        }
        m_port.gain_filter()->publish_ap_ch_data(ap);
        m_port.gain_filter()->publish_lp_ch_data(lfp);
        EXPECT_EQ(m_listener->ap, m_ap);
        EXPECT_EQ(m_listener->lfp, m_lfp);
    }

    void expect(std::size_t channel, std::size_t bank, std::size_t ap_code, std::size_t lfp_code) {
        m_ap[channel] = factor_of(bank, ap_code);
        m_lfp[channel] = factor_of(bank, lfp_code);
        expect_factors();
    }

    Probe_Port m_port;
    std::shared_ptr<Last_Values> m_listener = std::make_shared<Last_Values>();
    Last_Values::Values m_ap;
    Last_Values::Values m_lfp;
};

TEST_F(ProbePort, FilterFollowsSettingsThatAreAccepted) {
    EXPECT_TRUE(m_port.select_electrode(5, 1));
    expect(5, 1, 0, 0);
    EXPECT_TRUE(m_port.set_gain(5, 3, 6));
    expect(5, 1, 3, 6);
    EXPECT_TRUE(m_port.select_electrode(100, 2));
    expect(100, 2, 0, 0);
}

TEST_F(ProbePort, RejectedBankLeavesTheFilterAsItWas) {
    EXPECT_TRUE(m_port.select_electrode(5, 1));
    EXPECT_TRUE(m_port.set_gain(5, 3, 6));
    for (const int bank : {3, 4, 254, 256, 257, -1}) {
        EXPECT_FALSE(m_port.select_electrode(5, bank)) << bank;
        expect(5, 1, 3, 6);
    }
    EXPECT_FALSE(m_port.select_electrode(200, 2)) << "bank 2 ends at channel 191";
    EXPECT_FALSE(m_port.select_electrode(191, 1)) << "which is the references' own";
    EXPECT_FALSE(m_port.select_electrode(384, 0));
    expect_factors();
}

TEST_F(ProbePort, RejectedGainLeavesTheFilterAsItWas) {
    EXPECT_TRUE(m_port.set_gain(5, 3, 6));
    for (const int code : {8, 255, 256, 257, -1}) {
        EXPECT_FALSE(m_port.set_gain(5, code, 1)) << code;
        EXPECT_FALSE(m_port.set_gain(5, 1, code)) << code;
        expect(5, 0, 3, 6);
    }
    EXPECT_FALSE(m_port.set_gain(384, 1, 1));
    EXPECT_FALSE(m_port.set_gain(-1, 1, 1));
    expect_factors();
}

TEST_F(ProbePort, DisconnectedChannelKeepsTheFactorThatItHad) {
    EXPECT_TRUE(m_port.select_electrode(5, 1));
    EXPECT_TRUE(m_port.select_electrode(5, 255));
    expect(5, 1, 0, 0);
}

} // namespace
