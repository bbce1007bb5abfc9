#include "fpga/UART_Module.h"

#include "Printed.h"
#include "Register_Recorder.h"
#include "Waiter_Guard.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Pelgar::ORBE::UART_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::text_thrown_by;
using Pelgar::ORBE::test::Waiter_Guard;
using Pelgar::ORBE::test::write_of;

constexpr std::uint32_t receive_data = 0x400;
constexpr std::uint32_t transmit_data = 0x404;
constexpr std::uint32_t status = 0x408;

class UARTModule : public testing::Test {
protected:
    // The process keeps in mind that an answer is not trusted, over tests that run in the same one.
    UARTModule() {
        Register_Recorder elsewhere;
        UART_Module uart(&elsewhere, 0x400);
        uart.set_dropping_left_over_answers(true);
        uart.send(nullptr, 0);
    }

    Register_Recorder m_registers;
    UART_Module m_uart{&m_registers, 0x400};
    Waiter_Guard m_waiter;
};

TEST_F(UARTModule, PrintsItsBase) {
    const auto printed = printed_by([&] { const UART_Module uart(&m_registers, 0x400); });
    EXPECT_EQ(printed.out, "UART_Module ctor at base adr : 400\n");
}

TEST_F(UARTModule, ReceiveTakesAByteEachTimeTheStatusSaysOneIsThere) {
    m_registers.set_value(status, 0x1);
    m_registers.queue_reads(receive_data, {0xC3, 0x1FF});
    std::array<std::uint8_t, 3> bytes{0, 0, 0x77};
    const auto printed = printed_by([&] { m_uart.receive(bytes.data(), 2, 10); });
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{0xC3, 0xFF, 0x77}));
    EXPECT_EQ(m_registers.accesses(),
              (std::vector<Register_Access>{read_of(status, 0x1), read_of(receive_data, 0xC3),
                                            read_of(status, 0x1), read_of(receive_data, 0x1FF)}));
    EXPECT_TRUE(m_waiter.waits().empty());
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err, "");
}

TEST_F(UARTModule, ReceiveOfNothingTouchesNothing) {
    const auto printed = printed_by([&] { m_uart.receive(nullptr, 0, 10); });
    EXPECT_TRUE(m_registers.accesses().empty());
    EXPECT_EQ(printed.out, "");
}

TEST_F(UARTModule, ReceiveWaitsOneMillisecondAPollAndTellsWhatTheLastByteLeftOfTheBudget) {
    m_registers.queue_reads(status, {0, 1, 0, 4, 0, 1});
    std::array<std::uint8_t, 2> bytes{};
    const auto printed = printed_by([&] { m_uart.receive(bytes.data(), 2, 10); });
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(4, 1ms));
    EXPECT_EQ(printed.out, "Reception complete at time : 7\n");
}

TEST_F(UARTModule, ReceiveSaysNothingWhenTheLastByteWasThereAtOnce) {
    m_registers.queue_reads(status, {0, 0, 1, 1});
    std::array<std::uint8_t, 2> bytes{};
    const auto printed = printed_by([&] { m_uart.receive(bytes.data(), 2, 10); });
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(2, 1ms));
    EXPECT_EQ(printed.out, "");
}

TEST_F(UARTModule, BudgetIsRenewedWithEveryByte) {
    m_registers.queue_reads(status, {0, 0, 1, 0, 0, 1, 0, 0, 1});
    std::array<std::uint8_t, 3> bytes{};
    const auto printed = printed_by([&] { m_uart.receive(bytes.data(), 3, 3); });
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(6, 1ms));
    EXPECT_EQ(printed.out, "Reception complete at time : 1\n");
}

TEST_F(UARTModule, ReceiveThrowsWhenTheBudgetRunsOutAndKeepsWhatCameBefore) {
    m_registers.queue_reads(status, {1});
    m_registers.set_value(status, 0);
    m_registers.queue_reads(receive_data, {0xC3});
    std::array<std::uint8_t, 2> bytes{0, 0x77};
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_uart.receive(bytes.data(), 2, 10); }),
              "UART_Module recv timeout");
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 2>{0xC3, 0x77}));
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(10, 1ms));
    EXPECT_EQ(m_registers.accesses().size(), 12U) << "two accesses for the byte, ten polls without one";
}

TEST_F(UARTModule, WhatIsLeftOfADistrustedAnswerIsDroppedBeforeTheNextSend) {
    m_uart.set_dropping_left_over_answers(true);
    UART_Module::distrust_answer();
    m_registers.queue_reads(status, {1, 1, 4});
    m_registers.set_value(status, 4);
    m_registers.queue_reads(receive_data, {0xC3, 0x0A});
    const std::uint8_t byte = 0x79;
    printed_by([&] { m_uart.send(&byte, 1); });
    using Accesses = std::vector<Register_Access>;
    EXPECT_EQ(m_registers.accesses(),
              (Accesses{read_of(status, 1), read_of(receive_data, 0xC3), read_of(status, 1),
                        read_of(receive_data, 0x0A), read_of(status, 4), write_of(transmit_data, 0x79),
                        read_of(status, 4)}));
    m_registers.clear_accesses();
    printed_by([&] { m_uart.send(&byte, 1); });
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(transmit_data, 0x79), read_of(status, 4)}))
        << "once";
}

TEST_F(UARTModule, WhatIsLeftOfADistrustedAnswerStaysUnlessItIsToBeDropped) {
    UART_Module::distrust_answer();
    const std::uint8_t byte = 0x79;
    printed_by([&] { m_uart.send(&byte, 1); });
    using Accesses = std::vector<Register_Access>;
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(transmit_data, 0x79), read_of(status, 0)}));
}

TEST_F(UARTModule, BytesThatDoNotEndDoNotHoldTheNextSendUp) {
    m_uart.set_dropping_left_over_answers(true);
    UART_Module::distrust_answer();
    m_registers.set_value(status, 1);
    const std::uint8_t byte = 0x79;
    printed_by([&] { m_uart.send(&byte, 1); });
    EXPECT_EQ(m_registers.writes_to(transmit_data).size(), 1U);
}

TEST_F(UARTModule, BudgetOfZeroStillEnds) {
    std::uint8_t byte = 0;
    EXPECT_EQ(text_thrown_by<std::runtime_error>([&] { m_uart.receive(&byte, 1, 0); }),
              "UART_Module recv timeout");
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(1, 1ms));
}

TEST_F(UARTModule, SendWritesTheBytesAndThenReadsTheStatus) {
    const std::array<std::uint8_t, 3> bytes{0x79, 0xFF, 0x00};
    m_uart.send(bytes.data(), 3);
    EXPECT_EQ(m_registers.accesses(),
              (std::vector<Register_Access>{write_of(transmit_data, 0x79), write_of(transmit_data, 0xFF),
                                            write_of(transmit_data, 0x00), read_of(status, 0)}));
}

TEST_F(UARTModule, SendOf300BytesTransmits44) {
    std::vector<std::uint8_t> bytes(300);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    m_uart.send(bytes.data(), 300);
    std::vector<std::uint32_t> expected(44);
    std::iota(expected.begin(), expected.end(), 1U);
    EXPECT_EQ(m_registers.writes_to(transmit_data), expected);
}

TEST_F(UARTModule, SendOf256BytesTransmitsNoneAndReadsTheStatus) {
    const std::vector<std::uint8_t> bytes(256);
    m_uart.send(bytes.data(), 256);
    EXPECT_EQ(m_registers.accesses(), (std::vector<Register_Access>{read_of(status, 0)}));
}

TEST_F(UARTModule, LargestSendOfTheProcessIsAnnouncedWhenItGrows) {
    const std::vector<std::uint8_t> bytes(500);
    m_uart.send(bytes.data(), 400);
    UART_Module other(&m_registers, 0x0);
    const auto printed = printed_by([&] {
        other.send(bytes.data(), 0);
        other.send(bytes.data(), 400);
        other.send(bytes.data(), 401);
        m_uart.send(bytes.data(), 401);
        m_uart.send(bytes.data(), 500);
        other.send(bytes.data(), 3);
    });
    EXPECT_EQ(printed.out, "max_send_length : 401\nmax_send_length : 500\n");
}

TEST_F(UARTModule, StatusTellsOfEveryBitButThoseOfNormalTraffic) {
    const auto quiet = printed_by([&] {
        m_registers.queue_reads(status, {0x15});
        EXPECT_EQ(m_uart.read_status(), 0x15U);
    });
    EXPECT_EQ(quiet.err, "");
    for (unsigned bit = 0; bit < 32; ++bit) {
        const std::uint32_t value = 1U << bit;
        const auto printed = printed_by([&] {
            m_registers.queue_reads(status, {value});
            EXPECT_EQ(m_uart.read_status(), value);
        });
        const bool normal = bit == 0 || bit == 2 || bit == 4;
        EXPECT_EQ(printed.err.empty(), normal) << "bit " << bit;
    }
}

TEST_F(UARTModule, StatusErrorTextShowsTheStatusInHexadecimal) {
    const auto printed = printed_by([&] {
        m_registers.queue_reads(status, {0xAB});
        EXPECT_EQ(m_uart.read_status(), 0xABU);
    });
    EXPECT_EQ(printed.err, "UART_Module error exist in transfer. status_reg : ab\n");
    EXPECT_EQ(printed.out, "");
}

TEST_F(UARTModule, StatusErrorDisturbsNeitherReceiveNorSend) {
    m_registers.set_value(status, 0x21);
    m_registers.set_value(receive_data, 0x5A);
    std::uint8_t byte = 0;
    const std::uint8_t sent = 0x11;
    m_uart.send(&sent, 1);
    const auto printed = printed_by([&] {
        m_uart.receive(&byte, 1, 10);
        m_uart.send(&sent, 1);
    });
    EXPECT_EQ(byte, 0x5A);
    EXPECT_EQ(printed.err, "UART_Module error exist in transfer. status_reg : 21\n"
                           "UART_Module error exist in transfer. status_reg : 21\n");
    EXPECT_EQ(printed.out, "");
}

} // namespace
