// What the probe configuration does on the link: uploads, register reads and the PRBS test.
#include "probe_link/M_NP_Probe_Config.h"

#include "Expected_Chains.h"
#include "Log_Capture.h"
#include "Probe_Link_Fixture.h"
#include "probe_link/ADC_Calibration.h"
#include "probe_link/M_I2C_Over_GSML.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

std::uint8_t mirrored(std::uint8_t byte) {
    int result = 0;
    for (int digit = 0; digit < 8; ++digit) {
        result = result * 2 + byte % 2;
        byte /= 2;
    }
    return static_cast<std::uint8_t>(result);
}

std::uint8_t code(unsigned value) {
    return static_cast<std::uint8_t>(value);
}

// The frames of one pass through a chain.
void append_pass(Frames& frames, std::uint8_t sr_register, const Chain_Bytes& bytes) {
    frames.push_back(asic_write(0x10, static_cast<std::uint8_t>(bytes.size() % 256)));
    frames.push_back(asic_write(0x0F, static_cast<std::uint8_t>(bytes.size() / 256)));
    for (const std::uint8_t byte : bytes) {
        frames.push_back(asic_write(sr_register, mirrored(byte)));
    }
}

constexpr std::size_t shank_pass_frames = 2 + 121;
constexpr std::size_t base_pass_frames = 2 + 306;

class NP_Probe_Config_Link : public Probe_Link_Fixture {
protected:
    NP_Probe_Config_Link() {
        for (unsigned channel = 0; channel < 384; ++channel) {
            if (channel != 191) {
                m_config.select_electrode(channel, code(channel % 2));
                m_expected.connect(channel + 384 * (channel % 2), true);
            }
            m_config.set_channel_reference(channel, code(channel % 3));
            m_expected.reference(channel, channel % 3);
            m_config.set_channel_gain(channel, code(channel % 8), code(7 - channel % 7));
            m_expected.gain(channel, channel % 8, 7 - channel % 7);
        }
    }

    // What the upload makes of the references above.
    void expect_finalized() {
        for (const char* name : {"external 1", "external 2", "tip 1", "tip 2"}) {
            m_expected.set(name, true);
        }
        m_expected.connect(191, true);
    }

    Frames upload_frames(bool readcheck) const {
        Frames frames;
        append_pass(frames, 0x0E, m_expected.chains().shank);
        for (const auto& [sr_register, bytes] : {std::pair{0x0D, &m_expected.chains().base_even},
                                                 std::pair{0x0C, &m_expected.chains().base_odd}}) {
            append_pass(frames, static_cast<std::uint8_t>(sr_register), *bytes);
            if (readcheck) {
                append_pass(frames, static_cast<std::uint8_t>(sr_register), *bytes);
                frames.push_back(asic_read(0x08));
            }
        }
        return frames;
    }

    static std::vector<std::string> reference_texts() {
        return {"128 channels use EXT electrode reference", "  -> ExtElectrode1/2 enabled.",
                "128 channels use TIP electrode reference", "  -> TipElectrode1/2 enabled.",
                "128 channels have internal references selected. Connecting to internal reference bank 0"};
    }

    static void append(std::vector<std::string>& texts, const std::vector<std::string>& more) {
        texts.insert(texts.end(), more.begin(), more.end());
    }

    I2C_Over_GSML_Module m_i2c{&m_uart};
    NP_Probe_Config_Module m_config{&m_i2c};
    Expected_Chains m_expected;
};

TEST_F(NP_Probe_Config_Link, Setters_Write_Nothing_To_The_Probe) {
    const ADC_Calibration record{1, 2, 3, 4, 1, 2, 3, 4, 5};
    m_config.set_adc_calibration(&record);
    m_config.set_gain(0, 1, 1);
    m_config.set_reference(0, 1, 1);
    m_config.finalize_references();
    EXPECT_TRUE(m_bridge.frames().empty());
}

TEST_F(NP_Probe_Config_Link, Chain_Is_Sent_Length_First_And_Mirrored) {
    const std::array<std::uint8_t, 4> data{0x01, 0x80, 0x12, 0xFF};
    const Log_Capture log;
    m_config.sr_upload(0x0E, data.data(), 4, false);
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0xE0, 0x10, 0x01, 0x04},
                                         {0x79, 0xE0, 0x0F, 0x01, 0x00},
                                         {0x79, 0xE0, 0x0E, 0x01, 0x80},
                                         {0x79, 0xE0, 0x0E, 0x01, 0x01},
                                         {0x79, 0xE0, 0x0E, 0x01, 0x48},
                                         {0x79, 0xE0, 0x0E, 0x01, 0xFF}}));
    EXPECT_TRUE(log.texts().empty());
}

TEST_F(NP_Probe_Config_Link, Chain_Of_No_Bytes_Sends_Its_Length) {
    m_config.sr_upload(0x0D, nullptr, 0, false);
    EXPECT_EQ(m_bridge.frames(), (Frames{asic_write(0x10, 0), asic_write(0x0F, 0)}));
}

TEST_F(NP_Probe_Config_Link, Length_Is_Sent_As_Two_Bytes) {
    const std::vector<std::uint8_t> data(0x0302);
    m_config.sr_upload(0x0C, data.data(), 0x0302, false);
    ASSERT_EQ(m_bridge.frames().size(), 2U + 0x0302U);
    EXPECT_EQ(m_bridge.frames()[0], asic_write(0x10, 0x02));
    EXPECT_EQ(m_bridge.frames()[1], asic_write(0x0F, 0x03));
}

TEST_F(NP_Probe_Config_Link, Readcheck_Sends_The_Chain_Twice_And_Reads_The_Status) {
    m_bridge.reg(0xE0, 0x08) = 0x80;
    const std::uint8_t data = 0x03;
    const Log_Capture log;
    m_config.sr_upload(0x0D, &data, 1, true);
    EXPECT_EQ(m_bridge.frames(),
              (Frames{asic_write(0x10, 1), asic_write(0x0F, 0), asic_write(0x0D, 0xC0), asic_write(0x10, 1),
                      asic_write(0x0F, 0), asic_write(0x0D, 0xC0), asic_read(0x08)}));
    EXPECT_EQ(log.count(0, "SR upload readcheck status: 80h."), 1);
    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"SR upload readcheck status: 80h.", "SR upload status ok. (80h)."}));
}

TEST_F(NP_Probe_Config_Link, Readcheck_With_A_Bad_Status_Throws) {
    const std::uint8_t data = 0x03;
    const Log_Capture log;
    m_bridge.reg(0xE0, 0x08) = 0x7F;
    EXPECT_EQ(error_of([&] { m_config.sr_upload(0x0D, &data, 1, true); }), "SR upload status not ok");
    m_bridge.reg(0xE0, 0x08) = 0x05;
    EXPECT_EQ(error_of([&] { m_config.sr_upload(0x0D, &data, 1, true); }), "SR upload status not ok");
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"SR upload readcheck status: 7Fh.",
                                                     "SR upload readcheck status: 05h."}));
}

TEST_F(NP_Probe_Config_Link, Upload_Without_Readcheck) {
    const Log_Capture log;
    CaptureStdout();
    const auto start = std::chrono::steady_clock::now();
    m_config.upload_configuration(false);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    const std::string printed = GetCapturedStdout();
    expect_finalized();
    EXPECT_EQ(chains_of(m_config), m_expected.chains());
    EXPECT_EQ(m_bridge.frames(), upload_frames(false));
    EXPECT_EQ(m_bridge.frames().size(), 739U);

    const std::vector<std::string> parts{"Configuration loaded in ", " second.\n"};
    const std::string seconds =
        printed.substr(std::min(printed.size(), parts[0].size()),
                       printed.size() - std::min(printed.size(), parts[0].size() + parts[1].size()));
    ASSERT_FALSE(seconds.empty());
    ASSERT_TRUE(std::all_of(seconds.begin(), seconds.end(), [](char c) { return c >= '0' && c <= '9'; }));
    EXPECT_EQ(printed, parts[0] + seconds + parts[1]);
    EXPECT_LE(std::chrono::seconds(std::stoi(seconds)), elapsed);

    std::vector<std::string> texts = reference_texts();
    append(texts, {"start upload shank configuration on probe. SHANKCONFIGURATION_SIZE 121.",
                   "start upload odd channel base configuration on probe. BASECONFIGURATION_SIZE : 306",
                   "start upload even channel base configuration on probe. BASECONFIGURATION_SIZE : 306",
                   "start upload ADC calibration offset / threshold on probe.0",
                   "stat_read_transactions_total : 0", "stat_read_transactions_with_error : 0",
                   "stat_write_transactions_total : 739", "stat_write_transactions_with_error : 0"});
    EXPECT_EQ(log.texts(), texts);
    for (const Log_Line& line : log.lines()) {
        EXPECT_EQ(line.verbosity, 0) << line.text;
    }
}

TEST_F(NP_Probe_Config_Link, Upload_With_Readcheck_Repeats_The_Base_Chains_Only) {
    m_bridge.reg(0xE0, 0x08) = 0xFF;
    const Log_Capture log;
    m_config.upload_configuration(true);
    expect_finalized();
    EXPECT_EQ(m_bridge.frames(), upload_frames(true));
    EXPECT_EQ(m_bridge.frames().size(), 739U + 2 * base_pass_frames + 2);

    std::vector<std::string> texts = reference_texts();
    append(texts, {"start upload shank configuration on probe. SHANKCONFIGURATION_SIZE 121.",
                   "[ASIC Bug Workaround] readcheck on SR_CHAIN1 ignored 0.",
                   "start upload odd channel base configuration on probe. BASECONFIGURATION_SIZE : 306",
                   "SR upload readcheck status: FFh.", "SR upload status ok. (FFh).",
                   "start upload even channel base configuration on probe. BASECONFIGURATION_SIZE : 306",
                   "SR upload readcheck status: FFh.", "SR upload status ok. (FFh).",
                   "start upload ADC calibration offset / threshold on probe.0",
                   "stat_read_transactions_total : 2", "stat_read_transactions_with_error : 0",
                   "stat_write_transactions_total : 1355", "stat_write_transactions_with_error : 0"});
    EXPECT_EQ(log.texts(), texts);
}

TEST_F(NP_Probe_Config_Link, Upload_Prints_Whole_Seconds) {
    m_bridge.delay(5, std::chrono::milliseconds(1100));
    CaptureStdout();
    const auto start = std::chrono::steady_clock::now();
    m_config.upload_configuration(false);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    int seconds = 0;
    ASSERT_EQ(std::sscanf(GetCapturedStdout().c_str(), "Configuration loaded in %d second.\n", &seconds), 1);
    EXPECT_GE(seconds, 1);
    EXPECT_LE(std::chrono::seconds(seconds), elapsed);
}

TEST_F(NP_Probe_Config_Link, Upload_Stops_At_A_Bad_Readcheck_And_Can_Be_Repeated) {
    m_bridge.reg(0xE0, 0x08) = 0x00;
    CaptureStdout();
    EXPECT_EQ(error_of([&] { m_config.upload_configuration(true); }), "SR upload status not ok");
    EXPECT_EQ(GetCapturedStdout(), "");
    expect_finalized();
    EXPECT_EQ(chains_of(m_config), m_expected.chains());
    EXPECT_EQ(m_bridge.frames().size(), shank_pass_frames + 2 * base_pass_frames + 1);
    EXPECT_EQ(m_bridge.frames().back(), asic_read(0x08));

    m_bridge.reg(0xE0, 0x08) = 0x80;
    m_bridge.forget();
    m_config.upload_configuration(true);
    EXPECT_EQ(m_bridge.frames(), upload_frames(true));
}

TEST_F(NP_Probe_Config_Link, Upload_Tolerates_No_Wrong_Acknowledge) {
    for (const std::size_t transaction :
         {std::size_t{1}, std::size_t{2}, std::size_t{3}, shank_pass_frames + 1,
          shank_pass_frames + base_pass_frames, shank_pass_frames + 2 * base_pass_frames}) {
        m_bridge.forget();
        m_bridge.answer_status(transaction, 0x00);
        CaptureStderr();
        EXPECT_EQ(error_of([&] { m_config.upload_configuration(false); }), "qbsc_writeI2C ACK error");
        EXPECT_EQ(GetCapturedStderr(), "qbsc_writeI2C ACK err\n");
        EXPECT_EQ(m_bridge.frames().size(), transaction);
    }
    expect_finalized();
    EXPECT_EQ(chains_of(m_config), m_expected.chains());
}

TEST_F(NP_Probe_Config_Link, Upload_Passes_On_A_Failing_Status_Read) {
    m_bridge.answer_status(shank_pass_frames + 2 * base_pass_frames + 1, 0x00);
    EXPECT_EQ(error_of([&] { m_config.upload_configuration(true); }), "qbsc_readI2C error");
}

TEST_F(NP_Probe_Config_Link, Upload_Passes_On_Silence) {
    m_bridge.cut_answer(10, 0);
    const Counted_Waits waits;
    EXPECT_EQ(error_of([&] { m_config.upload_configuration(false); }), "UART_Module recv timeout");
    EXPECT_EQ(waits.waits(), std::vector(10, std::chrono::milliseconds(1)));
    EXPECT_EQ(m_bridge.frames().size(), 10U);
}

TEST_F(NP_Probe_Config_Link, Registers_Are_Read_One_By_One) {
    for (const unsigned i : {0U, 1U, 2U}) {
        m_bridge.reg(0xA0, code(0x10 + i)) = code(0x31 + i);
    }
    std::array<std::uint8_t, 4> buffer{9, 9, 9, 9};
    m_config.read_registers(0xA0, 0x10, buffer.data(), 3);
    EXPECT_EQ(buffer, (std::array<std::uint8_t, 4>{0x31, 0x32, 0x33, 9}));
    EXPECT_EQ(m_bridge.frames(),
              (Frames{{0x79, 0xA1, 0x10, 0x01}, {0x79, 0xA1, 0x11, 0x01}, {0x79, 0xA1, 0x12, 0x01}}));
}

TEST_F(NP_Probe_Config_Link, No_Registers_No_Frames) {
    m_config.read_registers(0xA0, 0x10, nullptr, 0);
    EXPECT_TRUE(m_bridge.frames().empty());
}

TEST_F(NP_Probe_Config_Link, Failing_Register_Read_Ends_The_Loop) {
    m_bridge.answer_status(2, 0x00);
    std::array<std::uint8_t, 3> buffer{9, 9, 9};
    EXPECT_EQ(error_of([&] { m_config.read_registers(0xA0, 0, buffer.data(), 3); }), "qbsc_readI2C error");
    EXPECT_EQ(m_bridge.frames().size(), 2U);
    EXPECT_EQ(buffer[2], 9);
}

class NP_Probe_Config_Text : public NP_Probe_Config_Link {
protected:
    NP_Probe_Config_Text() {
        const std::string text = "PRB_1";
        for (std::size_t i = 0; i < text.size(); ++i) {
            m_bridge.reg(0xA4, static_cast<std::uint8_t>(20 + i)) = static_cast<std::uint8_t>(text[i]);
        }
    }

    std::string m_buffer = std::string(8, '#');
};

TEST_F(NP_Probe_Config_Text, Ends_At_The_First_Zero) {
    EXPECT_EQ(m_config.read_string(0xA4, 20, m_buffer.data(), 7), 5U);
    EXPECT_EQ(m_buffer, std::string("PRB_1\0##", 8));
    Frames frames;
    for (std::uint8_t reg = 20; reg <= 25; ++reg) {
        frames.push_back({0x79, 0xA5, reg, 0x01});
    }
    EXPECT_EQ(m_bridge.frames(), frames);
}

TEST_F(NP_Probe_Config_Text, Ends_After_The_Maximum) {
    EXPECT_EQ(m_config.read_string(0xA4, 20, m_buffer.data(), 3), 3U);
    EXPECT_EQ(m_buffer, std::string("PRB\0####", 8));
    EXPECT_EQ(m_bridge.frames().size(), 3U);
}

TEST_F(NP_Probe_Config_Text, Empty_Text) {
    EXPECT_EQ(m_config.read_string(0xA4, 100, m_buffer.data(), 7), 0U);
    EXPECT_EQ(m_buffer, std::string("\0#######", 8));
    EXPECT_EQ(m_bridge.frames().size(), 1U);
}

TEST_F(NP_Probe_Config_Text, Maximum_Of_Zero_Reads_Nothing) {
    EXPECT_EQ(m_config.read_string(0xA4, 20, m_buffer.data(), 0), 0U);
    EXPECT_EQ(m_buffer, std::string("\0#######", 8));
    EXPECT_TRUE(m_bridge.frames().empty());
}

class NP_Probe_Config_PRBS : public NP_Probe_Config_Link {
protected:
    NP_Probe_Config_PRBS() {
        m_bridge.reg(0x80, 0x04) = 0x83;
        m_bridge.reg(0x90, 0x04) = 0x87;
    }

    static Frames start_frames() {
        return {serializer_read(0x04), deserializer_read(0x04), deserializer_write(0x04, 0xA7),
                serializer_write(0x04, 0xA3)};
    }

    static Frames stop_frames() {
        return {serializer_write(0x04, 0x83), serializer_write(0x04, 0x83), deserializer_write(0x04, 0x87),
                serializer_read(0x04),        deserializer_read(0x04),      deserializer_read(0x13)};
    }
};

TEST_F(NP_Probe_Config_PRBS, Start_Switches_Both_Ends) {
    const Log_Capture log;
    m_config.start_prbs_test();
    EXPECT_EQ(m_bridge.frames(), start_frames());
    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"switch on deserializer PRBS  ", "switch on serializer PRBS  "}));
    EXPECT_EQ(log.count(0, "switch on deserializer PRBS  "), 1);
    EXPECT_EQ(log.lines().size(), 2U);
    EXPECT_EQ(log.lines()[0].file, "M_NP_Probe_Config.cpp");
}

TEST_F(NP_Probe_Config_PRBS, Start_Reports_Unexpected_Modes_And_Goes_On) {
    m_bridge.reg(0x80, 0x04) = 0xA3;
    m_bridge.reg(0x90, 0x04) = 0x05;
    const Log_Capture log;
    m_config.start_prbs_test();
    EXPECT_EQ(m_bridge.frames(), start_frames());
    EXPECT_EQ(log.texts(), (std::vector<std::string>{
                               "serializer[0x04]==A3 expected 0x83", "deserializer[0x04]== 5 expected 0x87",
                               "switch on deserializer PRBS  ", "switch on serializer PRBS  "}));
    EXPECT_EQ(log.count(-2, "serializer[0x04]==A3 expected 0x83"), 1);
    EXPECT_EQ(log.count(-2, "deserializer[0x04]== 5 expected 0x87"), 1);
}

TEST_F(NP_Probe_Config_PRBS, Start_Passes_On_A_Failing_Read) {
    m_bridge.answer_status(1, 0x00);
    EXPECT_EQ(error_of([&] { m_config.start_prbs_test(); }), "qbsc_readI2C error");
    EXPECT_EQ(m_bridge.frames().size(), 1U);
}

TEST_F(NP_Probe_Config_PRBS, Stop_Returns_The_Error_Count) {
    m_bridge.reg(0x90, 0x13) = 0xFE;
    const Log_Capture log;
    EXPECT_EQ(m_config.stop_prbs_test(), 254U);
    EXPECT_EQ(m_bridge.frames(), stop_frames());
    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"switch off serializer PRBS  ", "switch off deserializer PRBS  ",
                                        "deserializer PRBS error count:254"}));
}

TEST_F(NP_Probe_Config_PRBS, Start_And_Stop_Leave_Both_Ends_In_Normal_Operation) {
    m_config.start_prbs_test();
    EXPECT_EQ(m_config.stop_prbs_test(), 0U);
    EXPECT_EQ(m_bridge.reg(0x80, 0x04), 0x83);
    EXPECT_EQ(m_bridge.reg(0x90, 0x04), 0x87);
}

TEST_F(NP_Probe_Config_PRBS, Stop_Throws_When_The_Serializer_Stays_In_The_Test) {
    m_bridge.pin(0x80, 0x04, 0xA3);
    const Log_Capture log;
    EXPECT_EQ(error_of([&] { m_config.stop_prbs_test(); }), "stop_pbrs_test : Unexpected response 1");
    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"switch off serializer PRBS  ", "switch off deserializer PRBS  ",
                                        "serializer[0x04]==A3 expected 0x83"}));
    Frames frames = stop_frames();
    frames.resize(4);
    EXPECT_EQ(m_bridge.frames(), frames);
}

TEST_F(NP_Probe_Config_PRBS, Stop_Throws_When_The_Deserializer_Stays_In_The_Test) {
    m_bridge.pin(0x90, 0x04, 0xA7);
    const Log_Capture log;
    EXPECT_EQ(error_of([&] { m_config.stop_prbs_test(); }), "stop_pbrs_test : Unexpected response 2");
    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"switch off serializer PRBS  ", "switch off deserializer PRBS  ",
                                        "deserializer[0x04]==A7 expected 0x87"}));
    Frames frames = stop_frames();
    frames.resize(5);
    EXPECT_EQ(m_bridge.frames(), frames);
}

} // namespace
} // namespace Pelgar::ORBE::test
