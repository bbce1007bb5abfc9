// The setters and the images of the probe configuration; nothing here touches the link.
#include "probe_link/M_NP_Probe_Config.h"

#include "Expected_Chains.h"
#include "Log_Capture.h"
#include "probe_link/ADC_Calibration.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

std::uint8_t code(unsigned value) {
    return static_cast<std::uint8_t>(value);
}

class NP_Probe_Config : public testing::Test {
protected:
    void expect_as_expected() const { ASSERT_EQ(chains_of(m_config), m_expected.chains()); }

    void expect_counts(unsigned ext, unsigned tip, unsigned internal) const {
        EXPECT_EQ(m_config.ext_ref_count(), ext);
        EXPECT_EQ(m_config.tip_ref_count(), tip);
        EXPECT_EQ(m_config.int_ref_count(), internal);
    }

    // The setter logs exactly this error, answers -1 and changes no bit.
    template <typename Setter>
    void expect_rejected(const std::string& text, Setter setter) {
        const Chain_Set before = chains_of(m_config);
        const Log_Capture log;
        EXPECT_EQ(setter(), -1);
        ASSERT_EQ(log.lines().size(), 1U);
        EXPECT_EQ(log.lines()[0].text, text);
        EXPECT_EQ(log.lines()[0].verbosity, -2);
        EXPECT_EQ(log.lines()[0].file, "M_NP_Probe_Config.cpp");
        EXPECT_EQ(chains_of(m_config), before);
    }

    // Something in every part of the images, so that a stray change shows.
    void fill() {
        for (unsigned channel = 0; channel < 384; ++channel) {
            if (channel != 191) {
                m_config.select_electrode(channel, code(channel % 2));
            }
            m_config.set_channel_reference(channel, code(channel % 3));
            m_config.set_channel_gain(channel, code(channel % 8), code((channel / 8) % 8));
            m_config.set_standby(channel, channel % 5 == 0);
            m_config.set_ap_filter(channel, channel % 7 == 0);
        }
        for (unsigned adc = 0; adc < 32; ++adc) {
            const ADC_Calibration record{adc,     adc,     31 - adc,  adc % 8,  adc % 4,
                                         adc % 3, adc / 2, 100 + adc, 200 + adc};
            m_config.set_adc_calibration(&record);
        }
    }

    NP_Probe_Config_Module m_config{nullptr};
    Expected_Chains m_expected;
};

TEST_F(NP_Probe_Config, Constructor_And_Destructor_Print) {
    CaptureStdout();
    {
        const NP_Probe_Config_Module module(nullptr);
        EXPECT_EQ(GetCapturedStdout(), "NP_Probe_Config_Module ctor\n");
        CaptureStdout();
    }
    EXPECT_EQ(GetCapturedStdout(), "NP_Probe_Config_Module dtor\n");
}

TEST_F(NP_Probe_Config, Everything_Is_Zero_After_Construction) {
    EXPECT_EQ(chains_of(m_config), (Chain_Set{Chain_Bytes(121), Chain_Bytes(306), Chain_Bytes(306)}));
    expect_counts(0, 0, 0);
    for (unsigned adc = 0; adc < 32; ++adc) {
        EXPECT_EQ(m_config.adc_offset_threshold(adc).offset, 0U);
        EXPECT_EQ(m_config.adc_offset_threshold(adc).threshold, 0U);
    }
    for (unsigned channel = 0; channel < 384; ++channel) {
        std::uint32_t ap = 9;
        std::uint32_t lfp = 9;
        EXPECT_EQ(m_config.get_gain(channel, &ap, &lfp), 0);
        EXPECT_EQ(ap, 0U);
        EXPECT_EQ(lfp, 0U);
    }
}

TEST_F(NP_Probe_Config, Every_Channel_In_Every_Bank_Connects_Its_Electrode) {
    for (unsigned channel = 0; channel < 384; ++channel) {
        for (unsigned bank = 0; bank < 3; ++bank) {
            if (channel == 191 || (bank == 2 && channel >= 192)) {
                continue;
            }
            const unsigned electrode = bank * 384 + channel;
            ASSERT_EQ(m_config.select_electrode(channel, code(bank)), 0);
            m_expected.connect(electrode, true);
            expect_as_expected();
            ASSERT_EQ(m_config.get_channel_bank(channel), bank);
            std::uint32_t answered = 0;
            ASSERT_EQ(m_config.get_channel_electrode(channel, &answered), 1);
            ASSERT_EQ(answered, electrode);

            ASSERT_EQ(m_config.select_electrode(channel, 255), 0);
            m_expected.connect(electrode, false);
            expect_as_expected();
            ASSERT_EQ(m_config.get_channel_bank(channel), 255);
        }
    }
}

TEST_F(NP_Probe_Config, All_Electrodes_Together) {
    for (unsigned channel = 0; channel < 384; ++channel) {
        for (unsigned bank = 0; bank < 3; ++bank) {
            if (channel != 191 && (bank != 2 || channel < 192)) {
                m_config.select_electrode(channel, code(bank));
                m_expected.connect(bank * 384 + channel, true);
            }
        }
    }
    expect_as_expected();
}

TEST_F(NP_Probe_Config, Another_Bank_Leaves_The_First_One_Connected) {
    m_config.select_electrode(10, 2);
    m_config.select_electrode(10, 1);
    m_expected.connect(10 + 384, true);
    m_expected.connect(10 + 768, true);
    expect_as_expected();
    EXPECT_EQ(m_config.get_channel_bank(10), 1);
    std::uint32_t electrode = 0;
    EXPECT_EQ(m_config.get_channel_electrode(10, &electrode), 1);
    EXPECT_EQ(electrode, 394U);
}

TEST_F(NP_Probe_Config, Bank_255_Disconnects_The_Channel_From_All_Banks) {
    fill();
    for (const unsigned bank : {0U, 1U, 2U}) {
        m_config.select_electrode(100, code(bank));
    }
    const Chain_Set before = chains_of(m_config);
    EXPECT_EQ(m_config.select_electrode(100, 255), 0);
    EXPECT_EQ(m_config.get_channel_bank(100), 255);
    // Nothing but the channel's three electrodes has changed.
    for (const unsigned bank : {0U, 1U, 2U}) {
        m_config.select_electrode(100, code(bank));
    }
    EXPECT_EQ(chains_of(m_config), before);
}

TEST_F(NP_Probe_Config, Bank_255_Of_A_Channel_Without_A_Third_Bank) {
    m_config.select_electrode(300, 0);
    m_config.select_electrode(300, 1);
    m_expected.connect(300, true);
    m_expected.connect(684, true);
    expect_as_expected();
    EXPECT_EQ(m_config.select_electrode(300, 255), 0);
    m_expected.connect(300, false);
    m_expected.connect(684, false);
    expect_as_expected();
}

TEST_F(NP_Probe_Config, Channel_191_Is_Refused_In_Any_Bank) {
    fill();
    for (const unsigned bank : {0U, 1U, 2U, 3U, 255U}) {
        expect_rejected("invalid channel: 191. selection of reference electrode 191/575/959 not allowed",
                        [&] { return m_config.select_electrode(191, code(bank)); });
    }
}

TEST_F(NP_Probe_Config, Channels_Beyond_383_Are_Refused_Before_The_Bank_Is_Looked_At) {
    fill();
    for (const unsigned bank : {0U, 2U, 3U, 255U}) {
        expect_rejected("invalid channel: 384. index out of bound.",
                        [&] { return m_config.select_electrode(384, code(bank)); });
    }
    expect_rejected("invalid channel: 959. index out of bound.",
                    [&] { return m_config.select_electrode(959, 0); });
    expect_rejected("invalid channel: -1. index out of bound.",
                    [&] { return m_config.select_electrode(0xFFFFFFFF, 0); });
}

TEST_F(NP_Probe_Config, Bank_2_Is_Refused_From_Channel_192_On) {
    fill();
    for (unsigned channel = 192; channel < 384; ++channel) {
        expect_rejected("invalid electrode bank: 2 for channel " + std::to_string(channel) +
                            ". Only bank0/1 are valid in channel range 192..383.",
                        [&] { return m_config.select_electrode(channel, 2); });
    }
}

TEST_F(NP_Probe_Config, Other_Banks_Are_Refused) {
    fill();
    for (unsigned bank = 3; bank < 255; ++bank) {
        expect_rejected("invalid electrode bank: " + std::to_string(bank),
                        [&] { return m_config.select_electrode(bank % 2 != 0 ? 5 : 300, code(bank)); });
    }
}

TEST_F(NP_Probe_Config, Unconnected_Channels_Answer_Bank_255_And_No_Electrode) {
    std::uint32_t electrode = 77;
    EXPECT_EQ(m_config.get_channel_bank(7), 255);
    EXPECT_EQ(m_config.get_channel_electrode(7, &electrode), 0);
    EXPECT_EQ(electrode, 77U);
}

TEST_F(NP_Probe_Config, Electrodes_Of_960_Or_More_Count_As_Not_Connected) {
    fill();
    EXPECT_EQ(m_config.get_channel_bank(960), 255);
    EXPECT_EQ(m_config.get_channel_bank(0xFFFFFFFF), 255);
    // 384 below zero: would be channel 0 again if electrode numbers wrapped.
    EXPECT_EQ(m_config.get_channel_bank(0xFFFFFFFF - 383), 255);
}

TEST_F(NP_Probe_Config, Channel_Map_Prints_Every_Channel) {
    m_config.select_electrode(0, 0);
    m_config.select_electrode(1, 1);
    m_config.select_electrode(2, 2);
    m_config.select_electrode(383, 1);
    std::string text =
        "Channel 0 pixel mapping 0\nChannel 1 pixel mapping 385\nChannel 2 pixel mapping 770\n";
    for (int channel = 3; channel < 383; ++channel) {
        text += "Channel " + std::to_string(channel) + " not assigned\n";
    }
    text += "Channel 383 pixel mapping 767\n";
    CaptureStdout();
    m_config.print_channel_map();
    EXPECT_EQ(GetCapturedStdout(), text);
}

TEST_F(NP_Probe_Config, Every_Channel_With_Every_Reference) {
    for (unsigned channel = 0; channel < 384; ++channel) {
        // Each step replaces the reference before it, in both directions.
        for (const unsigned reference : {0U, 1U, 2U, 1U, 0U, 2U}) {
            ASSERT_EQ(m_config.set_channel_reference(channel, code(reference)), 0);
            m_expected.reference(channel, reference);
            expect_as_expected();
            expect_counts(reference == 0, reference == 1, channel + (reference == 2));
        }
    }
}

TEST_F(NP_Probe_Config, The_Same_Reference_Twice_Counts_Once) {
    m_config.set_channel_reference(20, 0);
    m_config.set_channel_reference(20, 0);
    expect_counts(1, 0, 0);
    m_config.set_channel_reference(20, 1);
    expect_counts(0, 1, 0);
    m_config.set_channel_reference(20, 2);
    expect_counts(0, 0, 1);
}

TEST_F(NP_Probe_Config, Wrong_References_Are_Refused) {
    fill();
    expect_counts(128, 128, 128);
    expect_rejected("invalid channel: 384", [&] { return m_config.set_channel_reference(384, 0); });
    expect_rejected("invalid channel: 384", [&] { return m_config.set_channel_reference(384, 3); });
    expect_rejected("invalid channel reference: 3", [&] { return m_config.set_channel_reference(0, 3); });
    expect_rejected("invalid channel reference: 255",
                    [&] { return m_config.set_channel_reference(383, 255); });
    expect_counts(128, 128, 128);
}

TEST_F(NP_Probe_Config, Set_Reference_Sets_The_Channels_Reference) {
    for (const unsigned reference : {0U, 1U, 2U}) {
        EXPECT_EQ(m_config.set_reference(9, code(reference), 1), 0);
        m_expected.reference(9, reference);
        expect_as_expected();
    }
}

TEST_F(NP_Probe_Config, Set_Reference_Finds_A_Wrong_Bank_One_Call_Late_And_For_Good) {
    EXPECT_EQ(m_config.set_reference(9, 2, 3), 0);
    m_expected.reference(9, 2);
    expect_as_expected();
    expect_rejected("invalid channel internal reference: 3", [&] { return m_config.set_reference(9, 0, 0); });
    expect_rejected("invalid channel internal reference: 3", [&] { return m_config.set_reference(9, 0, 0); });
    expect_counts(0, 0, 1);
}

TEST_F(NP_Probe_Config, Set_Reference_Answers_Success_For_A_Wrong_Channel_Or_Reference) {
    fill();
    const Chain_Set before = chains_of(m_config);
    const Log_Capture log;
    EXPECT_EQ(m_config.set_reference(384, 0, 0), 0);
    EXPECT_EQ(m_config.set_reference(0, 3, 0), 0);
    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"invalid channel: 384", "invalid channel reference: 3"}));
    EXPECT_EQ(chains_of(m_config), before);
}

TEST_F(NP_Probe_Config, Set_Reference_Keeps_The_Bank_Of_A_Call_With_A_Wrong_Channel) {
    EXPECT_EQ(m_config.set_reference(384, 0, 7), 0);
    expect_rejected("invalid channel internal reference: 7", [&] { return m_config.set_reference(0, 0, 0); });
}

TEST_F(NP_Probe_Config, Set_Reference_Does_Not_Keep_A_Bank_That_No_Byte_Holds) {
    EXPECT_EQ(m_config.set_reference(9, 2, 1), 0);
    m_expected.reference(9, 2);
    expect_rejected("invalid channel internal reference: 256",
                    [&] { return m_config.set_reference(9, 0, 256); });
    expect_rejected("invalid channel internal reference: -1",
                    [&] { return m_config.set_reference(9, 0, 0xFFFFFFFF); });
    EXPECT_EQ(m_config.set_reference(9, 1, 2), 0);
    m_expected.reference(9, 1);
    expect_as_expected();
}

TEST_F(NP_Probe_Config, Numbers_That_No_Byte_Holds_Are_Rejected_And_Logged_As_They_Are) {
    expect_rejected("invalid electrode bank: 256", [&] { return m_config.select_electrode(0, 256); });
    expect_rejected("invalid electrode bank: 511", [&] { return m_config.select_electrode(0, 511); });
    expect_rejected("invalid electrode bank: -1", [&] { return m_config.select_electrode(0, 0xFFFFFFFF); });
    expect_rejected("invalid channel reference: 256", [&] { return m_config.set_channel_reference(0, 256); });
    expect_rejected("invalid AP gain: 256", [&] { return m_config.set_gain(0, 256, 0); });
    expect_rejected("invalid LFP gain: -256", [&] { return m_config.set_gain(0, 0, 0xFFFFFF00); });
}

TEST_F(NP_Probe_Config, Every_Channel_With_Every_Gain) {
    for (unsigned channel = 0; channel < 384; ++channel) {
        for (unsigned ap = 0; ap < 8; ++ap) {
            for (unsigned lfp = 0; lfp < 8; ++lfp) {
                ASSERT_EQ(m_config.set_channel_gain(channel, code(ap), code(lfp)), 0);
                m_expected.gain(channel, ap, lfp);
                expect_as_expected();
            }
        }
    }
}

TEST_F(NP_Probe_Config, Every_Channels_Filter_And_Standby) {
    for (unsigned channel = 0; channel < 384; ++channel) {
        for (const bool on : {true, false, true}) {
            ASSERT_EQ(m_config.set_ap_filter(channel, on), 0);
            m_expected.ap_filter(channel, on);
            expect_as_expected();
            ASSERT_EQ(m_config.set_standby(channel, on), 0);
            m_expected.standby(channel, on);
            expect_as_expected();
        }
    }
}

TEST_F(NP_Probe_Config, Gain_Keeps_Filter_And_Standby) {
    m_config.set_ap_filter(100, true);
    m_config.set_standby(101, true);
    m_config.set_channel_gain(100, 7, 7);
    m_config.set_channel_gain(101, 7, 7);
    m_config.set_channel_gain(100, 1, 2);
    m_config.set_channel_gain(101, 3, 4);
    EXPECT_EQ(m_config.base_config_even().bytes()[72 + 50], 0x80 | (2 << 3) | 1);
    EXPECT_EQ(m_config.base_config_odd().bytes()[72 + 50], 0x40 | (4 << 3) | 3);
}

TEST_F(NP_Probe_Config, Wrong_Gains_Are_Refused) {
    fill();
    const auto both = [&](const std::string& text, std::uint32_t channel, std::uint8_t ap, std::uint8_t lfp) {
        expect_rejected(text, [&] { return m_config.set_channel_gain(channel, ap, lfp); });
        expect_rejected(text, [&] { return m_config.set_gain(channel, ap, lfp); });
    };
    both("invalid channel: 384", 384, 0, 0);
    both("invalid channel: 384", 384, 8, 8);
    both("invalid AP gain: 8", 0, 8, 0);
    both("invalid AP gain: 255", 0, 255, 255);
    both("invalid LFP gain: 8", 0, 7, 8);
    both("invalid LFP gain: 255", 383, 0, 255);
}

TEST_F(NP_Probe_Config, Get_Gain_Answers_The_AP_Code_Twice) {
    EXPECT_EQ(m_config.set_gain(40, 3, 5), 0);
    m_expected.gain(40, 3, 5);
    expect_as_expected();
    std::uint32_t ap = 0;
    std::uint32_t lfp = 0;
    EXPECT_EQ(m_config.get_gain(40, &ap, &lfp), 0);
    EXPECT_EQ(ap, 3U);
    EXPECT_EQ(lfp, 3U);
}

TEST_F(NP_Probe_Config, Get_Gain_Remembers_Accepted_Set_Gain_Calls_Only) {
    m_config.set_gain(383, 6, 1);
    m_config.set_channel_gain(383, 2, 2);
    m_config.set_gain(383, 7, 8);
    std::uint32_t ap = 0;
    std::uint32_t lfp = 0;
    EXPECT_EQ(m_config.get_gain(383, &ap, &lfp), 0);
    EXPECT_EQ(ap, 6U);
    EXPECT_EQ(lfp, 6U);
}

TEST_F(NP_Probe_Config, Get_Gain_Of_A_Channel_Out_Of_Range) {
    std::uint32_t ap = 77;
    std::uint32_t lfp = 78;
    const Log_Capture log;
    EXPECT_EQ(m_config.get_gain(384, &ap, &lfp), -1);
    EXPECT_EQ(ap, 77U);
    EXPECT_EQ(lfp, 78U);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(NP_Probe_Config, Filter_And_Standby_Of_A_Channel_Out_Of_Range_Are_Refused) {
    fill();
    for (const bool on : {true, false}) {
        expect_rejected("invalid channel: 384", [&] { return m_config.set_ap_filter(384, on); });
        expect_rejected("invalid channel: 1000", [&] { return m_config.set_standby(1000, on); });
    }
}

class NP_Probe_Config_ADC : public NP_Probe_Config {
protected:
    void expect_written(const ADC_Calibration& record) {
        ASSERT_EQ(m_config.set_adc_calibration(&record), 0);
        const std::string adc = ' ' + std::to_string(record.adc);
        m_expected.set_number("CompP" + adc, record.comp_p, 5);
        m_expected.set_number("CompN" + adc, record.comp_n, 5);
        m_expected.set_number("Slope" + adc, record.slope, 3);
        m_expected.set_number("Fine" + adc, record.fine, 2);
        m_expected.set_number("Coarse" + adc, record.coarse, 2);
        m_expected.set_number("Cfix" + adc, record.cfix, 4);
        expect_as_expected();
        EXPECT_EQ(m_config.adc_offset_threshold(record.adc).offset, record.offset);
        EXPECT_EQ(m_config.adc_offset_threshold(record.adc).threshold, record.threshold);
    }

    void expect_record_rejected(const std::string& text, const ADC_Calibration& record) {
        expect_rejected(text, [&] { return m_config.set_adc_calibration(&record); });
        for (unsigned adc = 0; adc < 32; ++adc) {
            EXPECT_EQ(m_config.adc_offset_threshold(adc).offset, 100 + adc);
            EXPECT_EQ(m_config.adc_offset_threshold(adc).threshold, 200 + adc);
        }
    }
};

TEST_F(NP_Probe_Config_ADC, Every_ADC_With_Every_Value_Of_Every_Field) {
    for (unsigned adc = 0; adc < 32; ++adc) {
        for (unsigned value = 0; value < 32; ++value) {
            expect_written({.adc = adc,
                            .comp_p = value,
                            .comp_n = 31 - value,
                            .slope = value % 8,
                            .coarse = value % 4,
                            .fine = (value / 4) % 4,
                            .cfix = (value * 5) % 16,
                            .offset = 0x80000000 + value,
                            .threshold = 0xFFFFFFFF - value});
        }
    }
}

TEST_F(NP_Probe_Config_ADC, Each_Field_Alone) {
    for (unsigned adc = 0; adc < 32; ++adc) {
        expect_written({adc, 31, 0, 0, 0, 0, 0, 0, 0});
        expect_written({adc, 0, 31, 0, 0, 0, 0, 0, 0});
        expect_written({adc, 0, 0, 7, 0, 0, 0, 0, 0});
        expect_written({adc, 0, 0, 0, 3, 0, 0, 0, 0});
        expect_written({adc, 0, 0, 0, 0, 3, 0, 0, 0});
        expect_written({adc, 0, 0, 0, 0, 0, 15, 0, 0});
        expect_written({adc, 0, 0, 0, 0, 0, 0, 4294967295, 4294967295});
    }
}

TEST_F(NP_Probe_Config_ADC, Wrong_Records_Are_Refused) {
    fill();
    expect_record_rejected("ADC7 CompP out of bound: 32", {7, 32, 0, 0, 0, 0, 0, 1, 2});
    expect_record_rejected("ADC8 CompN out of bound: 33", {8, 31, 33, 0, 0, 0, 0, 1, 2});
    expect_record_rejected("ADC9 Cfix out of bound: 16", {9, 31, 31, 7, 3, 3, 16, 1, 2});
    expect_record_rejected("ADC10 Slope out of bound: 8", {10, 31, 31, 8, 3, 3, 15, 1, 2});
    expect_record_rejected("ADC11 Coarse out of bound: 4", {11, 31, 31, 7, 4, 3, 15, 1, 2});
    expect_record_rejected("ADC31 Fine out of bound: 4", {31, 31, 31, 7, 3, 4, 15, 1, 2});
    expect_record_rejected("ADC0 CompP out of bound: -1", {0, 0xFFFFFFFF, 0, 0, 0, 0, 0, 1, 2});
}

TEST_F(NP_Probe_Config_ADC, Fields_Are_Checked_In_A_Fixed_Order) {
    fill();
    expect_record_rejected("ADC channel out of bound: 32", {32, 99, 99, 99, 99, 99, 99, 1, 2});
    expect_record_rejected("ADC3 CompP out of bound: 91", {3, 91, 92, 94, 95, 96, 93, 1, 2});
    expect_record_rejected("ADC3 CompN out of bound: 92", {3, 0, 92, 94, 95, 96, 93, 1, 2});
    expect_record_rejected("ADC3 Cfix out of bound: 93", {3, 0, 0, 94, 95, 96, 93, 1, 2});
    expect_record_rejected("ADC3 Slope out of bound: 94", {3, 0, 0, 94, 95, 96, 0, 1, 2});
    expect_record_rejected("ADC3 Coarse out of bound: 95", {3, 0, 0, 0, 95, 96, 0, 1, 2});
    expect_record_rejected("ADC3 Fine out of bound: 96", {3, 0, 0, 0, 0, 96, 0, 1, 2});
}

TEST_F(NP_Probe_Config_ADC, ADC_Index_Out_Of_Range_Is_Refused) {
    fill();
    expect_record_rejected("ADC channel out of bound: 32", {32, 0, 0, 0, 0, 0, 0, 1, 2});
    expect_record_rejected("ADC channel out of bound: 1000", {1000, 0, 0, 0, 0, 0, 0, 1, 2});
    expect_record_rejected("ADC channel out of bound: -1", {0xFFFFFFFF, 0, 0, 0, 0, 0, 0, 1, 2});
    EXPECT_THROW(m_config.adc_offset_threshold(32), std::out_of_range);
}

class NP_Probe_Config_References : public NP_Probe_Config {
protected:
    void expect_finalized(const std::vector<std::string>& texts) {
        const Log_Capture log;
        m_config.finalize_references();
        EXPECT_EQ(log.texts(), texts);
        for (const Log_Line& line : log.lines()) {
            EXPECT_EQ(line.verbosity, 0);
            EXPECT_EQ(line.file, "M_NP_Probe_Config.cpp");
        }
        expect_as_expected();
    }
};

TEST_F(NP_Probe_Config_References, None_Used) {
    expect_finalized({"0 channels use EXT electrode reference", "  -> ExtElectrode1/2 disabled.",
                      "0 channels use TIP electrode reference", "  -> TipElectrode1/2 disabled.",
                      "no internal references selected. 0"});
}

TEST_F(NP_Probe_Config_References, External_Electrodes) {
    m_config.set_channel_reference(1, 0);
    m_config.set_channel_reference(2, 0);
    m_expected.reference(1, 0);
    m_expected.reference(2, 0);
    m_expected.set("external 1", true);
    m_expected.set("external 2", true);
    expect_finalized({"2 channels use EXT electrode reference", "  -> ExtElectrode1/2 enabled.",
                      "0 channels use TIP electrode reference", "  -> TipElectrode1/2 disabled.",
                      "no internal references selected. 0"});
    EXPECT_TRUE(m_config.shank_config().bit(2));
    EXPECT_TRUE(m_config.shank_config().bit(965));
}

TEST_F(NP_Probe_Config_References, Tip_Electrodes) {
    m_config.set_channel_reference(383, 1);
    m_expected.reference(383, 1);
    m_expected.set("tip 1", true);
    m_expected.set("tip 2", true);
    expect_finalized({"0 channels use EXT electrode reference", "  -> ExtElectrode1/2 disabled.",
                      "1 channels use TIP electrode reference", "  -> TipElectrode1/2 enabled.",
                      "no internal references selected. 0"});
}

TEST_F(NP_Probe_Config_References, Internal_Electrode_Of_The_Bank) {
    unsigned before = 191;
    for (const unsigned bank : {0U, 1U, 2U}) {
        m_config.set_reference(5, 2, code(bank));
        m_expected.reference(5, 2);
        m_expected.connect(before, false);
        before = bank * 384 + 191;
        m_expected.connect(before, true);
        expect_finalized({"0 channels use EXT electrode reference", "  -> ExtElectrode1/2 disabled.",
                          "0 channels use TIP electrode reference", "  -> TipElectrode1/2 disabled.",
                          "1 channels have internal references selected. Connecting to internal reference "
                          "bank " +
                              std::to_string(bank)});
    }
}

TEST_F(NP_Probe_Config_References, Bank_Without_An_Electrode_Connects_None) {
    m_config.set_reference(5, 2, 3);
    m_expected.reference(5, 2);
    expect_finalized(
        {"0 channels use EXT electrode reference", "  -> ExtElectrode1/2 disabled.",
         "0 channels use TIP electrode reference", "  -> TipElectrode1/2 disabled.",
         "1 channels have internal references selected. Connecting to internal reference bank 3"});
}

TEST_F(NP_Probe_Config_References, Electrodes_Nobody_Uses_Any_More_Are_Switched_Off) {
    for (const unsigned reference : {0U, 1U, 2U}) {
        m_config.set_channel_reference(reference, code(reference));
    }
    m_config.finalize_references();
    for (const unsigned channel : {0U, 1U, 2U}) {
        m_config.set_channel_reference(channel, 1);
        m_expected.reference(channel, 1);
    }
    m_expected.set("tip 1", true);
    m_expected.set("tip 2", true);
    expect_finalized({"0 channels use EXT electrode reference", "  -> ExtElectrode1/2 disabled.",
                      "3 channels use TIP electrode reference", "  -> TipElectrode1/2 enabled.",
                      "no internal references selected. 0"});
}

TEST_F(NP_Probe_Config_References, Other_Electrodes_Stay_As_They_Are) {
    for (unsigned channel = 0; channel < 384; ++channel) {
        if (channel != 191) {
            m_config.select_electrode(channel, 1);
            m_expected.connect(channel + 384, true);
        }
    }
    m_config.finalize_references();
    expect_as_expected();
}

} // namespace
} // namespace Pelgar::ORBE::test
