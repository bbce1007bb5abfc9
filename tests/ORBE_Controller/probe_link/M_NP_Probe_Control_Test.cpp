#include "probe_link/M_NP_Probe_Control.h"

#include "Expected_Chains.h"
#include "Log_Capture.h"
#include "Probe_Link_Fixture.h"
#include "probe_link/M_I2C_Over_GSML.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::test {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

constexpr const char* resources = "resources";
constexpr const char* calibration_file = "resources/22175715561_ADCCalibration.csv";
constexpr const char* no_calibration_file =
    "ADC config file open error. File : resources/22175715561_ADCCalibration.csv\n";

constexpr std::uint8_t asic = 0xE0;

class NP_Probe_Control : public Probe_Link_Fixture {
protected:
    NP_Probe_Control() { std::filesystem::remove_all(resources); }

    I2C_Over_GSML_Module m_i2c{&m_uart};
    NP_Probe_Control_Module m_control{&m_i2c, resources};
};

TEST_F(NP_Probe_Control, Constructor_And_Destructor_Open_Scopes_Around_The_Configuration) {
    const Log_Capture log;
    CaptureStdout();
    {
        const NP_Probe_Control_Module module(&m_i2c);
        EXPECT_EQ(GetCapturedStdout(), "NP_Probe_Config_Module ctor\n");
        EXPECT_TRUE(log.has_scope(1, "NP_Probe_Control_Module"));
        EXPECT_FALSE(log.has_scope(1, "~NP_Probe_Control_Module"));
        CaptureStdout();
    }
    EXPECT_EQ(GetCapturedStdout(), "NP_Probe_Config_Module dtor\n");
    EXPECT_TRUE(log.has_scope(1, "~NP_Probe_Control_Module"));
    EXPECT_EQ(log.lines()[0].file, "M_NP_Probe_Control.cpp");
    EXPECT_TRUE(m_bridge.frames().empty());
}

class NP_Probe_Control_Init : public NP_Probe_Control {
protected:
    static Frames clearing() {
        Frames frames;
        for (const std::uint8_t reg : std::array<std::uint8_t, 7>{2, 3, 4, 5, 6, 7, 9}) {
            frames.push_back(asic_write(reg, 0x00));
        }
        return frames;
    }

    // The whole sequence with `power` in between.
    static Frames init_frames(const Frames& power) {
        Frames frames = clearing();
        frames.push_back(asic_write(0x00, 0x40));
        frames.push_back(asic_read(0x01));
        frames.insert(frames.end(), power.begin(), power.end());
        frames.push_back(serializer_write(0x0E, 0x42));
        frames.push_back(serializer_write(0x0F, 0xFC));
        return frames;
    }

    // The image of a probe that was initialised without a calibration file.
    static Expected_Chains initial_image() {
        Expected_Chains expected;
        for (unsigned channel = 0; channel < 384; ++channel) {
            if (channel != 191) {
                expected.connect(channel, true);
            }
            expected.reference(channel, 0);
            expected.gain(channel, 4, 0);
        }
        for (int adc = 0; adc < 32; ++adc) {
            expected.set_number("CompP " + std::to_string(adc), 16, 5);
            expected.set_number("CompN " + std::to_string(adc), 16, 5);
        }
        return expected;
    }

    // One row an ADC, last ADC first, with every number different from its neighbours.
    static void write_calibration_file() {
        std::filesystem::create_directory(resources);
        std::ofstream file(calibration_file);
        file << "22175715561\n";
        for (int adc = 31; adc >= 0; --adc) {
            file << adc << ',' << adc << ',' << 31 - adc << ',' << adc % 8 << ',' << adc % 4 << ','
                 << 3 - adc % 4 << ',' << adc % 16 << ',' << 1000 + adc << ',' << 2000 + adc << '\n';
        }
    }
};

TEST_F(NP_Probe_Control_Init, Frames_For_A_Probe_That_Is_Powered_Down) {
    m_bridge.reg(asic, 0x01) = 0x00;
    const Log_Capture log;
    EXPECT_EQ(m_control.np_init(), 0);
    EXPECT_EQ(m_bridge.frames(),
              init_frames({asic_write(0x01, 0x10), asic_write(0x01, 0x10), asic_write(0x01, 0xD0)}));
    EXPECT_EQ(m_bridge.frames().size(), 14U);
    EXPECT_TRUE(log.has_scope(1, "np_init"));
    EXPECT_TRUE(log.has_scope(1, "configure_serializer"));
}

TEST_F(NP_Probe_Control_Init, Other_Bits_Of_The_Power_Register_Are_Kept) {
    m_bridge.reg(asic, 0x01) = 0x2F;
    m_control.np_init();
    EXPECT_EQ(m_bridge.frames(),
              init_frames({asic_write(0x01, 0x3F), asic_write(0x01, 0x3F), asic_write(0x01, 0xFF)}));
}

TEST_F(NP_Probe_Control_Init, Power_That_Is_On_Is_Written_Once) {
    m_bridge.reg(asic, 0x01) = 0x12;
    m_control.np_init();
    EXPECT_EQ(m_bridge.frames(), init_frames({asic_write(0x01, 0xD2)}));
}

TEST_F(NP_Probe_Control_Init, Only_The_First_Power_Write_May_Go_Unacknowledged) {
    m_bridge.answer_status(10, 0x00);
    CaptureStderr();
    EXPECT_EQ(m_control.np_init(), 0);
    EXPECT_EQ(GetCapturedStderr(), std::string("qbsc_writeI2C ACK err\n") + no_calibration_file);
    EXPECT_EQ(m_bridge.frames(),
              init_frames({asic_write(0x01, 0x10), asic_write(0x01, 0x10), asic_write(0x01, 0xD0)}));

    for (const std::size_t transaction : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 11U, 12U, 13U, 14U}) {
        m_bridge.forget();
        m_bridge.reg(asic, 0x01) = 0x00;
        m_bridge.answer_status(transaction, 0x00);
        EXPECT_EQ(error_of([&] { m_control.np_init(); }), "qbsc_writeI2C ACK error") << transaction;
        EXPECT_EQ(m_bridge.frames().size(), transaction);
    }
    m_bridge.forget();
    m_bridge.answer_status(9, 0x00);
    EXPECT_EQ(error_of([&] { m_control.np_init(); }), "qbsc_readI2C error");
    EXPECT_EQ(m_bridge.frames().size(), 9U);
}

TEST_F(NP_Probe_Control_Init, Image_Without_A_Calibration_File) {
    const Log_Capture log;
    CaptureStderr();
    m_control.np_init();
    EXPECT_EQ(GetCapturedStderr(), no_calibration_file);
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"Using default ADC config"}));
    EXPECT_EQ(log.count(0, "Using default ADC config"), 1);
    EXPECT_EQ(chains_of(m_control.config()), initial_image().chains());
    EXPECT_EQ(m_control.config().ext_ref_count(), 384U);
    EXPECT_EQ(m_control.config().tip_ref_count(), 0U);
    EXPECT_EQ(m_control.config().int_ref_count(), 0U);
    for (unsigned adc = 0; adc < 32; ++adc) {
        EXPECT_EQ(m_control.config().adc_offset_threshold(adc).offset, 0U);
        EXPECT_EQ(m_control.config().adc_offset_threshold(adc).threshold, 0U);
    }
}

TEST_F(NP_Probe_Control_Init, Image_With_A_Calibration_File) {
    write_calibration_file();
    const Log_Capture log;
    CaptureStdout();
    m_control.np_init();
    EXPECT_EQ(GetCapturedStdout(), "ADC calibration data loaded.\n");
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"Using ADC config from file"}));
    EXPECT_EQ(log.count(1, "Using ADC config from file"), 1);
    Expected_Chains expected = initial_image();
    for (unsigned adc = 0; adc < 32; ++adc) {
        const std::string name = ' ' + std::to_string(adc);
        expected.set_number("CompP" + name, adc, 5);
        expected.set_number("CompN" + name, 31 - adc, 5);
        expected.set_number("Slope" + name, adc % 8, 3);
        expected.set_number("Coarse" + name, adc % 4, 2);
        expected.set_number("Fine" + name, 3 - adc % 4, 2);
        expected.set_number("Cfix" + name, adc % 16, 4);
        EXPECT_EQ(m_control.config().adc_offset_threshold(adc).offset, 1000 + adc);
        EXPECT_EQ(m_control.config().adc_offset_threshold(adc).threshold, 2000 + adc);
    }
    EXPECT_EQ(chains_of(m_control.config()), expected.chains());
}

TEST_F(NP_Probe_Control_Init, Later_Rows_Of_The_Calibration_File_Win) {
    std::filesystem::create_directory(resources);
    {
        std::ofstream file(calibration_file);
        file << "serial\n";
        for (int row = 0; row < 32; ++row) {
            file << "6," << row << ",0,0,0,0,0,0,0\n";
        }
    }
    m_control.np_init();
    Expected_Chains expected = initial_image();
    for (int adc = 0; adc < 32; ++adc) {
        expected.set_number("CompP " + std::to_string(adc), adc == 6 ? 31 : 0, 5);
        expected.set_number("CompN " + std::to_string(adc), 0, 5);
    }
    EXPECT_EQ(chains_of(m_control.config()), expected.chains());
}

TEST_F(NP_Probe_Control_Init, A_Bad_Row_Of_The_Calibration_File_Is_Logged_And_Left_Out) {
    std::filesystem::create_directory(resources);
    {
        std::ofstream file(calibration_file);
        file << "serial\n32,0,0,0,0,0,0,0,0\n1,32,0,0,0,0,0,0,0\n";
        for (int row = 2; row < 32; ++row) {
            file << row << ",1,0,0,0,0,0,0,0\n";
        }
    }
    const Log_Capture log;
    EXPECT_EQ(m_control.np_init(), 0);
    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"Using ADC config from file", "ADC channel out of bound: 32",
                                        "ADC1 CompP out of bound: 32"}));
    Expected_Chains expected = initial_image();
    for (int adc = 0; adc < 32; ++adc) {
        expected.set_number("CompP " + std::to_string(adc), adc >= 2 ? 1 : 0, 5);
        expected.set_number("CompN " + std::to_string(adc), 0, 5);
    }
    EXPECT_EQ(chains_of(m_control.config()), expected.chains());
}

TEST_F(NP_Probe_Control_Init, Calibration_Is_Chosen_Before_The_Serializer_Is_Configured) {
    const Log_Capture log;
    m_control.np_init();
    std::vector<std::string> order;
    for (const auto& line : log.lines()) {
        if (line.text == "Using default ADC config" || line.text == "{ configure_serializer") {
            order.push_back(line.text);
        }
    }
    EXPECT_EQ(order, (std::vector<std::string>{"Using default ADC config", "{ configure_serializer"}));
}

TEST_F(NP_Probe_Control_Init, A_Malformed_Calibration_File_Gives_The_Default) {
    std::filesystem::create_directory(resources);
    std::ofstream(calibration_file) << "serial\n1,2,3\n";
    const Log_Capture log;
    m_control.np_init();
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"Using default ADC config"}));
    EXPECT_EQ(chains_of(m_control.config()), initial_image().chains());
}

TEST_F(NP_Probe_Control_Init, Channel_Settings_Of_Before_Are_Reset_But_Other_Banks_Stay) {
    NP_Probe_Config_Module& config = m_control.config();
    Expected_Chains expected = initial_image();
    for (unsigned channel = 0; channel < 384; ++channel) {
        config.set_channel_reference(channel, static_cast<std::uint8_t>(channel % 3));
        config.set_channel_gain(channel, 7, 7);
        config.set_standby(channel, true);
        config.set_ap_filter(channel, true);
    }
    config.select_electrode(17, 2);
    expected.connect(17 + 768, true);
    m_control.np_init();
    EXPECT_EQ(chains_of(config), expected.chains());
    EXPECT_EQ(config.ext_ref_count(), 384U);
}

TEST_F(NP_Probe_Control_Init, Gains_Are_Not_Remembered) {
    m_control.np_init();
    for (unsigned channel = 0; channel < 384; ++channel) {
        std::uint32_t ap = 9;
        std::uint32_t lfp = 9;
        EXPECT_EQ(m_control.config().get_gain(channel, &ap, &lfp), 0);
        EXPECT_EQ(ap, 0U);
        EXPECT_EQ(lfp, 0U);
    }
}

TEST_F(NP_Probe_Control_Init, Quick_Init_Waits_A_Millisecond_After_Every_Step) {
    std::vector<std::pair<std::size_t, std::chrono::milliseconds>> waits;
    const Waiter before = replace_waiter(
        [&](std::chrono::milliseconds time) { waits.emplace_back(m_bridge.frames().size(), time); });
    const Log_Capture log;
    m_control.np_quick_init();
    replace_waiter(before);
    EXPECT_EQ(m_bridge.frames(), (Frames{asic_read(0x01), asic_write(0x01, 0x30), asic_write(0x01, 0xD0)}));
    const std::chrono::milliseconds one(1);
    EXPECT_EQ(waits,
              (std::vector<std::pair<std::size_t, std::chrono::milliseconds>>{{1, one}, {2, one}, {3, one}}));
    EXPECT_TRUE(log.has_scope(1, "np_quick_init"));
    EXPECT_EQ(chains_of(m_control.config()), Expected_Chains().chains());
}

TEST_F(NP_Probe_Control_Init, Quick_Init_Tolerates_No_Error) {
    const Counted_Waits waits;
    m_bridge.answer_status(1, 0x00);
    EXPECT_EQ(error_of([&] { m_control.np_quick_init(); }), "qbsc_readI2C error");
    EXPECT_EQ(waits.waits().size(), 0U);
    m_bridge.forget();
    m_bridge.answer_status(2, 0x00);
    EXPECT_EQ(error_of([&] { m_control.np_quick_init(); }), "qbsc_writeI2C ACK error");
    EXPECT_EQ(waits.waits().size(), 1U);
    m_bridge.forget();
    m_bridge.answer_status(3, 0x00);
    EXPECT_EQ(error_of([&] { m_control.np_quick_init(); }), "qbsc_writeI2C ACK error");
    EXPECT_EQ(waits.waits().size(), 3U);
}

TEST_F(NP_Probe_Control, Serializer_Configuration) {
    const Log_Capture log;
    m_control.configure_serializer(true);
    m_control.configure_serializer(false);
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0x80, 0x0E, 0x01, 0x42},
                                         {0x79, 0x80, 0x0F, 0x01, 0xFC},
                                         {0x79, 0x80, 0x0E, 0x01, 0x42},
                                         {0x79, 0x80, 0x0F, 0x01, 0xFE}}));
    EXPECT_TRUE(log.has_scope(1, "configure_serializer"));
}

TEST_F(NP_Probe_Control, Operating_Modes) {
    const Log_Capture log;
    CaptureStderr();
    EXPECT_EQ(m_control.setOPMODE(0), 0);
    EXPECT_EQ(m_control.setOPMODE(1), 0);
    EXPECT_EQ(m_control.setOPMODE(2), 0);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(m_bridge.frames(),
              (Frames{asic_write(0x00, 0x40), asic_write(0x00, 0x60), asic_write(0x00, 0x50)}));
    EXPECT_TRUE(log.has_scope(1, "setOPMODE"));
}

TEST_F(NP_Probe_Control, Unknown_Operating_Modes_Write_Nothing) {
    for (const int mode : {3, -1, 256}) {
        CaptureStderr();
        EXPECT_EQ(m_control.setOPMODE(mode), -1);
        EXPECT_EQ(GetCapturedStderr(), "invalid param 1\n");
    }
    EXPECT_TRUE(m_bridge.frames().empty());
}

TEST_F(NP_Probe_Control, Test_Signal_Changes_Its_Bit_Only) {
    const Log_Capture log;
    m_bridge.reg(asic, 0x02) = 0x00;
    EXPECT_EQ(m_control.setTestSignal(true), 0);
    m_bridge.reg(asic, 0x02) = 0xFF;
    EXPECT_EQ(m_control.setTestSignal(true), 0);
    EXPECT_EQ(m_control.setTestSignal(false), 0);
    m_bridge.reg(asic, 0x02) = 0x4A;
    EXPECT_EQ(m_control.setTestSignal(false), 0);
    EXPECT_EQ(m_bridge.frames(),
              (Frames{asic_read(0x02), asic_write(0x02, 0x10), asic_read(0x02), asic_write(0x02, 0xFF),
                      asic_read(0x02), asic_write(0x02, 0xEF), asic_read(0x02), asic_write(0x02, 0x4A)}));
    EXPECT_TRUE(log.has_scope(1, "setTestSignal"));
}

TEST_F(NP_Probe_Control, Calibration_Modes) {
    const Log_Capture log;
    for (const auto& [mode, before, after] :
         {std::array<unsigned, 3>{0, 0xFF, 0x9F}, std::array<unsigned, 3>{1, 0xFF, 0x5F},
          std::array<unsigned, 3>{2, 0xFF, 0x1F}, std::array<unsigned, 3>{3, 0xFF, 0x3F},
          std::array<unsigned, 3>{0, 0x00, 0x80}, std::array<unsigned, 3>{1, 0x00, 0x40},
          std::array<unsigned, 3>{2, 0x00, 0x00}, std::array<unsigned, 3>{3, 0x00, 0x20}}) {
        m_bridge.forget();
        m_bridge.reg(asic, 0x02) = static_cast<std::uint8_t>(before);
        EXPECT_EQ(m_control.set_cal_mode(mode), 0);
        EXPECT_EQ(m_bridge.frames(),
                  (Frames{asic_read(0x02), asic_write(0x02, static_cast<std::uint8_t>(after))}))
            << mode << " on " << before;
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(NP_Probe_Control, Unknown_Calibration_Modes_Write_Nothing) {
    const Log_Capture log;
    EXPECT_EQ(m_control.set_cal_mode(4), -1);
    EXPECT_EQ(m_control.set_cal_mode(0xFFFFFFFF), -1);
    ASSERT_EQ(log.lines().size(), 2U);
    EXPECT_EQ(log.count(-2, "invalid parameter mode: 4"), 1);
    EXPECT_EQ(log.count(-2, "invalid parameter mode: -1"), 1);
    EXPECT_EQ(m_bridge.frames(), (Frames{asic_read(0x02), asic_read(0x02)}));
}

TEST_F(NP_Probe_Control, A_Failing_Read_Ends_Before_The_Write) {
    m_bridge.answer_status(1, 0x00);
    EXPECT_EQ(error_of([&] { m_control.setTestSignal(true); }), "qbsc_readI2C error");
    EXPECT_EQ(m_bridge.frames(), (Frames{asic_read(0x02)}));
    m_bridge.forget();
    m_bridge.answer_status(1, 0x00);
    EXPECT_EQ(error_of([&] { m_control.set_cal_mode(0); }), "qbsc_readI2C error");
    EXPECT_EQ(m_bridge.frames(), (Frames{asic_read(0x02)}));
}

TEST_F(NP_Probe_Control, Writes_Tolerate_No_Wrong_Acknowledge) {
    const auto second_fails = [&](auto operation) {
        m_bridge.forget();
        m_bridge.answer_status(2, 0x00);
        EXPECT_EQ(error_of(operation), "qbsc_writeI2C ACK error");
        EXPECT_EQ(m_bridge.frames().size(), 2U);
    };
    second_fails([&] { m_control.setTestSignal(true); });
    second_fails([&] { m_control.set_cal_mode(1); });
    second_fails([&] { m_control.configure_serializer(true); });
    second_fails([&] { m_control.bist_PSB(); });
    second_fails([&] { m_control.bist_channel(); });
    second_fails([&] { m_control.bist_pixel(); });
    second_fails([&] { m_control.bist_end(); });
    m_bridge.forget();
    m_bridge.answer_status(1, 0x00);
    EXPECT_EQ(error_of([&] { m_control.setOPMODE(0); }), "qbsc_writeI2C ACK error");
}

TEST_F(NP_Probe_Control, Probe_Serial_Bus_Test) {
    const Log_Capture log;
    EXPECT_EQ(m_control.bist_PSB(), 0);
    EXPECT_EQ(m_bridge.frames(),
              (Frames{asic_write(0x01, 0xD0), asic_write(0x02, 0x00), asic_write(0x03, 0x00),
                      asic_write(0x04, 0x00), asic_write(0x05, 0x00), asic_write(0x06, 0x00),
                      asic_write(0x07, 0x00), asic_write(0x00, 0x50)}));
    EXPECT_TRUE(log.has_scope(1, "bist_PSB"));
    EXPECT_TRUE(log.has_scope(1, "setOPMODE"));
    EXPECT_TRUE(log.texts().empty());
}

const std::vector<std::string>& test_signal_texts() {
    static const std::vector<std::string> texts{
        "2.Enable the HS oscillator: set the OSC_STDB bit in the CAL_MOD register to 1.",
        "3.Set the PIX_CAL bit in the CAL_MOD register to 1."};
    return texts;
}

TEST_F(NP_Probe_Control, Channel_Test) {
    m_bridge.reg(asic, 0x02) = 0xA1;
    const Log_Capture log;
    EXPECT_EQ(m_control.bist_channel(), 0);
    EXPECT_EQ(m_bridge.frames(), (Frames{asic_read(0x02), asic_write(0x02, 0xB1), asic_read(0x02),
                                         asic_write(0x02, 0x51), asic_write(0x00, 0x60)}));
    EXPECT_EQ(log.texts(), test_signal_texts());
    for (const std::string& text : test_signal_texts()) {
        EXPECT_EQ(log.count(1, text), 1);
    }
    EXPECT_TRUE(log.has_scope(1, "bist_channel"));
    EXPECT_TRUE(log.has_scope(1, "setTestSignal"));
}

TEST_F(NP_Probe_Control, Pixel_Test) {
    m_bridge.reg(asic, 0x02) = 0x61;
    const Log_Capture log;
    EXPECT_EQ(m_control.bist_pixel(), 0);
    EXPECT_EQ(m_bridge.frames(), (Frames{asic_read(0x02), asic_write(0x02, 0x71), asic_read(0x02),
                                         asic_write(0x02, 0x91), asic_write(0x00, 0x60)}));
    std::vector<std::string> texts = test_signal_texts();
    texts.emplace_back(
        "4+5.Set the CAL bit in the OP_MODE register to 1. Set the REC bit in the OP_MODE register to 1");
    EXPECT_EQ(log.texts(), texts);
    for (const std::string& text : texts) {
        EXPECT_EQ(log.count(1, text), 1);
    }
    EXPECT_TRUE(log.has_scope(1, "bist_pixel"));
}

TEST_F(NP_Probe_Control, End_Of_The_Tests) {
    m_bridge.reg(asic, 0x02) = 0xFF;
    const Log_Capture log;
    EXPECT_EQ(m_control.bist_end(), 0);
    EXPECT_EQ(m_bridge.frames(), (Frames{asic_read(0x02), asic_write(0x02, 0xEF), asic_read(0x02),
                                         asic_write(0x02, 0x0F), asic_write(0x00, 0x40)}));
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"2.Disable the HS oscillator"}));
    EXPECT_EQ(log.count(1, "2.Disable the HS oscillator"), 1);
    EXPECT_TRUE(log.has_scope(1, "bist_end"));
}

} // namespace
} // namespace Pelgar::ORBE::test
