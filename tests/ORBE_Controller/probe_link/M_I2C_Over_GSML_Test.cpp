#include "probe_link/M_I2C_Over_GSML.h"

#include "Log_Capture.h"
#include "Probe_Link_Fixture.h"
#include "back_ends/CP_Sim_ORBE_Controller.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

class I2C_Over_GSML : public Probe_Link_Fixture {
protected:
    // The four lines of the statistics.
    static std::vector<std::string> statistics(int reads, int writes, int tolerated_writes) {
        return {"stat_read_transactions_total : " + std::to_string(reads),
                "stat_read_transactions_with_error : 0",
                "stat_write_transactions_total : " + std::to_string(writes),
                "stat_write_transactions_with_error : " + std::to_string(tolerated_writes)};
    }

    void expect_statistics(int reads, int writes, int tolerated_writes) const {
        const Log_Capture log;
        m_i2c.print_statistics();
        EXPECT_EQ(log.texts(), statistics(reads, writes, tolerated_writes));
    }

    I2C_Over_GSML_Module m_i2c{&m_uart};
};

TEST_F(I2C_Over_GSML, Constructor_And_Destructor_Open_Scopes_And_Send_Nothing) {
    const Log_Capture log;
    {
        const I2C_Over_GSML_Module module(&m_uart);
        EXPECT_TRUE(log.has_scope(1, "I2C_Over_GSML_Module"));
        EXPECT_FALSE(log.has_scope(1, "~I2C_Over_GSML_Module"));
    }
    EXPECT_TRUE(log.has_scope(1, "~I2C_Over_GSML_Module"));
    EXPECT_EQ(log.lines().front().file, "M_I2C_Over_GSML.cpp");
    EXPECT_TRUE(m_bridge.frames().empty());
}

TEST_F(I2C_Over_GSML, Write_Sends_Five_Bytes_And_Takes_The_Acknowledge) {
    CaptureStderr();
    m_i2c.qbsc_writeI2C(0xA4, 0x12, 0xFE, false);
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0xA4, 0x12, 0x01, 0xFE}}));
    EXPECT_EQ(m_bridge.unread(), 0U);
    EXPECT_EQ(m_bridge.reg(0xA4, 0x12), 0xFE);
    expect_statistics(0, 1, 0);
}

TEST_F(I2C_Over_GSML, Wrong_Acknowledge_Of_A_Tolerant_Write_Is_Printed_And_Counted) {
    m_bridge.answer_status(1, 0x00);
    CaptureStderr();
    m_i2c.qbsc_writeI2C(0xE0, 0x01, 0x10, true);
    EXPECT_EQ(GetCapturedStderr(), "qbsc_writeI2C ACK err\n");
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0xE0, 0x01, 0x01, 0x10}}));
    expect_statistics(0, 1, 1);
}

TEST_F(I2C_Over_GSML, Wrong_Acknowledge_Of_A_Write_Throws_And_Counts_Nothing) {
    m_bridge.answer_status(1, 0x00);
    m_bridge.answer_status(2, 0xC2);
    CaptureStderr();
    EXPECT_EQ(error_of([&] { m_i2c.qbsc_writeI2C(0xE0, 0x01, 0x10, false); }), "qbsc_writeI2C ACK error");
    EXPECT_EQ(error_of([&] { m_i2c.qbsc_writeI2C(0xE0, 0x01, 0x10, false); }), "qbsc_writeI2C ACK error");
    EXPECT_EQ(GetCapturedStderr(), "qbsc_writeI2C ACK err\nqbsc_writeI2C ACK err\n");
    expect_statistics(0, 0, 0);
}

TEST_F(I2C_Over_GSML, A_Good_Acknowledge_Counts_No_Error_For_A_Tolerant_Write) {
    m_i2c.qbsc_writeI2C(0xE0, 0x01, 0x10, true);
    expect_statistics(0, 1, 0);
}

TEST_F(I2C_Over_GSML, Read_Sends_Four_Bytes_And_Returns_The_Data_Byte) {
    m_bridge.reg(0xA0, 0x28) = 0x5A;
    std::uint8_t value = 0;
    EXPECT_EQ(m_i2c.qbsc_readI2C(0xA0, 0x28, &value), 0x5A);
    EXPECT_EQ(value, 0x5A);
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0xA1, 0x28, 0x01}}));
    EXPECT_EQ(m_bridge.unread(), 0U);
    expect_statistics(1, 0, 0);
}

TEST_F(I2C_Over_GSML, Read_Of_An_Odd_Address_Keeps_It) {
    m_bridge.reg(0xA0, 0x00) = 0x11;
    std::uint8_t value = 0;
    EXPECT_EQ(m_i2c.qbsc_readI2C(0xA1, 0x00, &value), 0x11);
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0xA1, 0x00, 0x01}}));
}

TEST_F(I2C_Over_GSML, Write_To_An_Odd_Address_Is_Sent_As_Given) {
    // The double takes such a frame for a read, so only the first bytes on the wire are of interest.
    class Recorder : public I_MemMapped_AXI {
    public:
        void write_register(std::uint32_t /*address*/, std::uint32_t /*value*/) override {}

        std::uint32_t read_register(std::uint32_t address) override { return address == 0x408 ? 1 : 0xC3; }

        void write_register_bytes(std::uint32_t /*address*/, std::uint8_t count,
                                  const std::uint8_t* bytes) override {
            m_sent.assign(bytes, bytes + count);
        }

        Frame m_sent;
    };

    Recorder recorder;
    UART_Module uart(&recorder, 0x400);
    I2C_Over_GSML_Module i2c(&uart);
    i2c.qbsc_writeI2C(0xA1, 0x02, 0x03, false);
    EXPECT_EQ(recorder.m_sent, (Frame{0x79, 0xA1, 0x02, 0x01, 0x03}));
}

TEST_F(I2C_Over_GSML, Read_With_A_Wrong_Status_Throws_After_Storing_The_Data_Byte) {
    m_bridge.reg(0x90, 0x1E) = 0x77;
    m_bridge.answer_status(1, 0x00);
    std::uint8_t value = 0;
    CaptureStderr();
    EXPECT_EQ(error_of([&] { m_i2c.qbsc_readI2C(0x90, 0x1E, &value); }), "qbsc_readI2C error");
    EXPECT_EQ(GetCapturedStderr(), "qbsc_readI2C err\n");
    EXPECT_EQ(value, 0x77);
    EXPECT_EQ(m_bridge.unread(), 0U);
    expect_statistics(0, 0, 0);
}

TEST_F(I2C_Over_GSML, Block_Read_Is_One_Frame_And_Counts_Nothing) {
    m_bridge.reg(0xA0, 0x05) = 1;
    m_bridge.reg(0xA0, 0x06) = 2;
    m_bridge.reg(0xA0, 0x07) = 3;
    std::array<std::uint8_t, 4> buffer{9, 9, 9, 9};
    m_i2c.qbsc_readI2C_n_bytes(0xA0, 0x05, buffer.data(), 3);
    EXPECT_EQ(buffer, (std::array<std::uint8_t, 4>{1, 2, 3, 9}));
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0xA1, 0x05, 0x03}}));
    expect_statistics(0, 0, 0);
}

TEST_F(I2C_Over_GSML, Block_Read_Of_255_Bytes) {
    for (int i = 0; i < 256; ++i) {
        m_bridge.reg(0xA0, static_cast<std::uint8_t>(i)) = static_cast<std::uint8_t>(255 - i);
    }
    std::array<std::uint8_t, 255> buffer{};
    m_i2c.qbsc_readI2C_n_bytes(0xA0, 0x00, buffer.data(), 255);
    for (std::size_t i = 0; i < buffer.size(); ++i) {
        ASSERT_EQ(buffer[i], 255 - i);
    }
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0xA1, 0x00, 0xFF}}));
}

TEST_F(I2C_Over_GSML, Block_Read_Of_No_Bytes_Receives_The_Status_Only) {
    std::uint8_t buffer = 9;
    m_i2c.qbsc_readI2C_n_bytes(0xA0, 0x05, &buffer, 0);
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0xA1, 0x05, 0x00}}));
    EXPECT_EQ(m_bridge.unread(), 0U);
    EXPECT_EQ(buffer, 9);
}

TEST_F(I2C_Over_GSML, Block_Read_With_A_Wrong_Status_Throws_And_Leaves_The_Buffer_Alone) {
    m_bridge.answer_status(1, 0x3C);
    m_bridge.cut_answer(1, 1);
    std::array<std::uint8_t, 2> buffer{9, 9};
    CaptureStderr();
    EXPECT_EQ(error_of([&] { m_i2c.qbsc_readI2C_n_bytes(0xA0, 0x05, buffer.data(), 2); }),
              "qbsc_readI2C_n_bytes error");
    EXPECT_EQ(GetCapturedStderr(), "qbsc_readI2C_n_bytes err\n");
    EXPECT_EQ(buffer, (std::array<std::uint8_t, 2>{9, 9}));
    expect_statistics(0, 0, 0);
}

TEST_F(I2C_Over_GSML, Silence_After_A_Write_Ends_After_Ten_Waits_Of_One_Millisecond) {
    m_bridge.cut_answer(1, 0);
    const Counted_Waits waits;
    CaptureStderr();
    // Tolerance is for wrong acknowledges, not for missing ones.
    EXPECT_EQ(error_of([&] { m_i2c.qbsc_writeI2C(0xE0, 0x01, 0x10, true); }), "UART_Module recv timeout");
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(waits.waits(), std::vector(10, std::chrono::milliseconds(1)));
    expect_statistics(0, 0, 0);
}

TEST_F(I2C_Over_GSML, Silence_After_The_Status_Of_A_Read_Leaves_The_Value_Alone) {
    m_bridge.cut_answer(1, 1);
    const Counted_Waits waits;
    std::uint8_t value = 9;
    EXPECT_EQ(error_of([&] { m_i2c.qbsc_readI2C(0xE0, 0x01, &value); }), "UART_Module recv timeout");
    EXPECT_EQ(waits.waits(), std::vector(10, std::chrono::milliseconds(1)));
    EXPECT_EQ(value, 9);
    expect_statistics(0, 0, 0);
}

TEST_F(I2C_Over_GSML, Silence_In_A_Block_Read_Keeps_What_Came_Before) {
    m_bridge.reg(0xA0, 0x00) = 0x42;
    m_bridge.cut_answer(1, 2);
    const Counted_Waits waits;
    std::array<std::uint8_t, 2> buffer{9, 9};
    EXPECT_EQ(error_of([&] { m_i2c.qbsc_readI2C_n_bytes(0xA0, 0x00, buffer.data(), 2); }),
              "UART_Module recv timeout");
    EXPECT_EQ(waits.waits(), std::vector(10, std::chrono::milliseconds(1)));
    EXPECT_EQ(buffer, (std::array<std::uint8_t, 2>{0x42, 9}));
}

TEST_F(I2C_Over_GSML, Device_Shorthands_Fix_The_Address) {
    m_bridge.reg(0xE0, 0x01) = 0x0E;
    m_bridge.reg(0x80, 0x1E) = 0x08;
    m_bridge.reg(0x90, 0x1E) = 0x09;
    std::uint8_t value = 0;
    EXPECT_EQ(m_i2c.read_asic(0x01, &value), 0x0E);
    EXPECT_EQ(value, 0x0E);
    m_i2c.write_asic(0x02, 0xAA, false);
    EXPECT_EQ(m_i2c.read_serializer(0x1E, &value), 0x08);
    EXPECT_EQ(value, 0x08);
    m_i2c.write_serializer(0x04, 0x83);
    EXPECT_EQ(m_i2c.read_deserializer(0x1E, &value), 0x09);
    EXPECT_EQ(value, 0x09);
    m_i2c.write_deserializer(0x04, 0x87);
    EXPECT_EQ(m_bridge.frames(), (Frames{{0x79, 0xE1, 0x01, 0x01},
                                         {0x79, 0xE0, 0x02, 0x01, 0xAA},
                                         {0x79, 0x81, 0x1E, 0x01},
                                         {0x79, 0x80, 0x04, 0x01, 0x83},
                                         {0x79, 0x91, 0x1E, 0x01},
                                         {0x79, 0x90, 0x04, 0x01, 0x87}}));
    expect_statistics(3, 3, 0);
}

TEST_F(I2C_Over_GSML, Only_The_Asic_Shorthand_Can_Tolerate_A_Wrong_Acknowledge) {
    for (const std::size_t transaction : {1U, 2U, 3U, 4U}) {
        m_bridge.answer_status(transaction, 0x00);
    }
    CaptureStderr();
    EXPECT_EQ(error_of([&] { m_i2c.write_asic(0x01, 0x10, false); }), "qbsc_writeI2C ACK error");
    m_i2c.write_asic(0x01, 0x10, true);
    EXPECT_EQ(error_of([&] { m_i2c.write_serializer(0x04, 0x83); }), "qbsc_writeI2C ACK error");
    EXPECT_EQ(error_of([&] { m_i2c.write_deserializer(0x04, 0x87); }), "qbsc_writeI2C ACK error");
    EXPECT_EQ(GetCapturedStderr(), "qbsc_writeI2C ACK err\nqbsc_writeI2C ACK err\n"
                                   "qbsc_writeI2C ACK err\nqbsc_writeI2C ACK err\n");
    expect_statistics(0, 1, 1);
}

TEST_F(I2C_Over_GSML, Statistics_Are_Information_And_Never_Reset) {
    std::uint8_t value = 0;
    m_i2c.read_asic(0x00, &value);
    m_i2c.write_asic(0x00, 0, false);
    expect_statistics(1, 1, 0);
    const Log_Capture log;
    m_i2c.print_statistics();
    ASSERT_EQ(log.lines().size(), 4U);
    for (const Log_Line& line : log.lines()) {
        EXPECT_EQ(line.verbosity, 0);
        EXPECT_EQ(line.file, "M_I2C_Over_GSML.cpp");
    }
    EXPECT_EQ(log.texts(), statistics(1, 1, 0));
}

TEST(I2C_Over_GSML_Simulation, Every_Write_Succeeds_And_Every_Read_Returns_The_Acknowledge_Byte) {
    CP_Sim_ORBE_Controller simulation;
    ASSERT_TRUE(simulation.open_driver_connection("", false));
    I2C_Over_GSML_Module i2c(&simulation.uart());
    i2c.write_asic(0x00, 0x40, false);
    std::uint8_t value = 0;
    EXPECT_EQ(i2c.read_serializer(0x04, &value), 0xC3);
    EXPECT_EQ(value, 0xC3);
    std::array<std::uint8_t, 3> buffer{};
    i2c.qbsc_readI2C_n_bytes(0xA0, 0x00, buffer.data(), 3);
    EXPECT_EQ(buffer, (std::array<std::uint8_t, 3>{0xC3, 0xC3, 0xC3}));
}

} // namespace
} // namespace Pelgar::ORBE::test
