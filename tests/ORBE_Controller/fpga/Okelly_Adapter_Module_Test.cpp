#include "fpga/Okelly_Adapter_Module.h"

#include "Printed.h"
#include "Register_Recorder.h"
#include "Waiter_Guard.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Pelgar::ORBE::Okelly_Adapter_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::Waiter_Guard;
using Pelgar::ORBE::test::write_of;

using Accesses = std::vector<Register_Access>;

constexpr std::uint32_t mode = 0x1000;
constexpr std::uint32_t max_time_step = 0x1004;
constexpr std::uint32_t spi_clock = 0x100C;
constexpr std::uint32_t miso_delay = 0x1010;
constexpr std::uint32_t aux_index = 0x1014;
constexpr std::uint32_t aux_bank = 0x1018;
constexpr std::uint32_t aux_command = 0x101C;
constexpr std::uint32_t aux_list_end = 0x102C;
constexpr std::uint32_t enabled_streams = 0x1050;
constexpr std::uint32_t ttl_out = 0x1054;
constexpr std::uint32_t ttl_in = 0x108C;
constexpr std::uint32_t spi_clock_state = 0x1090;
constexpr std::uint32_t triggers = 0x10A0;
constexpr std::uint32_t acquisition_trigger = 0x10A4;

class OkellyAdapterModule : public testing::Test {
protected:
    Register_Recorder m_registers;
    Okelly_Adapter_Module m_okelly{&m_registers, 0x1000};
    Waiter_Guard m_waiter;
};

TEST_F(OkellyAdapterModule, PrintsItsBaseAndStartsWithoutStreams) {
    const auto printed = printed_by([&] {
        const Okelly_Adapter_Module okelly(&m_registers, 0x1000);
        EXPECT_EQ(okelly.get_enabled_stream_count(), 0U);
    });
    EXPECT_EQ(printed.out, "Okelly_Adapter_Module ctor at base adr : 1000\n");
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(OkellyAdapterModule, ContinuousModeWritesTheWholeRegister) {
    m_okelly.set_continous_mode(true);
    m_okelly.set_continous_mode(false);
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(mode, 2), write_of(mode, 0)}));
}

TEST_F(OkellyAdapterModule, MaxTimeStepIsWrittenAsItIs) {
    m_okelly.set_max_time_step(0xFFFF'FFFF);
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(max_time_step, 0xFFFF'FFFF)}));
}

TEST_F(OkellyAdapterModule, MisoDelayLeavesTheOtherPortsAtZero) {
    m_registers.set_value(miso_delay, 0xFFFF'FFFF);
    m_okelly.set_miso_delay(2, 5);
    m_okelly.set_miso_delay(0, 3);
    m_okelly.set_miso_delay(7, 0xF);
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(miso_delay, 0x500), write_of(miso_delay, 0x3),
                                                write_of(miso_delay, 0xF000'0000)}));
}

TEST_F(OkellyAdapterModule, MisoDelayOfAPortBeyondTheRegisterIsLost) {
    m_okelly.set_miso_delay(8, 5);
    m_okelly.set_miso_delay(0x4000'0000, 5);
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(miso_delay, 0), write_of(miso_delay, 0)}));
}

TEST_F(OkellyAdapterModule, TTLValuesGoOutAndComeIn) {
    m_registers.set_value(ttl_in, 0xBEEF);
    m_okelly.set_ttl_out_value(0x1234'5678);
    EXPECT_EQ(m_okelly.get_ttl_in_value(), 0xBEEFU);
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(ttl_out, 0x1234'5678), read_of(ttl_in, 0xBEEF)}));
}

TEST_F(OkellyAdapterModule, AcquisitionTriggerIsOneWrite) {
    m_okelly.trigger_fsm();
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(acquisition_trigger, 1)}));
}

TEST_F(OkellyAdapterModule, BankCommandIsThreeWritesAndATrigger) {
    m_okelly.update_bank_cmd(2, 0x3FF, 0xE842, 0);
    m_okelly.update_bank_cmd(1, 7, 0xFFFF, 2);
    EXPECT_EQ(m_registers.accesses(),
              (Accesses{write_of(aux_index, 0x3FF), write_of(aux_bank, 2), write_of(aux_command, 0xE842),
                        write_of(triggers, 2), write_of(aux_index, 7), write_of(aux_bank, 1),
                        write_of(aux_command, 0xFFFF), write_of(triggers, 8)}));
}

TEST_F(OkellyAdapterModule, BankCommandTriggerHasEightBits) {
    m_okelly.update_bank_cmd(0, 0, 0, 6);
    m_okelly.update_bank_cmd(0, 0, 0, 7);
    m_okelly.update_bank_cmd(0, 0, 0, 32);
    m_okelly.update_bank_cmd(0, 0, 0, 255);
    EXPECT_EQ(m_registers.writes_to(triggers), (std::vector<std::uint32_t>{0x80, 0, 0, 0}));
}

TEST_F(OkellyAdapterModule, AuxCommandsAreWrittenOneByOneAndTheirEndIndexIsSet) {
    m_registers.set_value(aux_list_end, 0xFFFF'FFFF);
    m_okelly.set_aux_cmds(0, 1, {0xA, 0xB, 0xC});
    EXPECT_EQ(m_registers.accesses(),
              (Accesses{write_of(aux_index, 0), write_of(aux_bank, 0), write_of(aux_command, 0xA),
                        write_of(triggers, 4), write_of(aux_index, 1), write_of(aux_bank, 0),
                        write_of(aux_command, 0xB), write_of(triggers, 4), write_of(aux_index, 2),
                        write_of(aux_bank, 0), write_of(aux_command, 0xC), write_of(triggers, 4),
                        read_of(aux_list_end, 0xFFFF'FFFF), write_of(aux_list_end, 0xFFF0'0BFF)}));
}

TEST_F(OkellyAdapterModule, AuxEndIndexOfEverySlotHasItsField) {
    m_okelly.set_aux_cmds(2, 0, {1, 2});
    m_okelly.set_aux_cmds(2, 1, {1, 2, 3});
    m_okelly.set_aux_cmds(2, 2, {1, 2, 3, 4});
    EXPECT_EQ(m_registers.value(aux_list_end), (3U << 20) | (2U << 10) | 1U);
    m_okelly.set_aux_cmds(2, 1, {1});
    EXPECT_EQ(m_registers.value(aux_list_end), (3U << 20) | 1U);
}

TEST_F(OkellyAdapterModule, AuxEndIndexStaysWithinItsField) {
    m_registers.set_value(aux_list_end, 0x3FF0'0000);
    m_okelly.set_aux_cmds(0, 0, std::vector<std::uint16_t>(1025));
    EXPECT_EQ(m_registers.value(aux_list_end), 0x3FF0'0000U);
}

TEST_F(OkellyAdapterModule, AuxCommandsRefuseOtherBanksAndSlots) {
    const auto printed = printed_by([&] {
        m_okelly.set_aux_cmds(3, 0, {1});
        m_okelly.set_aux_cmds(0, 3, {1});
        m_okelly.set_aux_cmds(3, 3, {});
    });
    EXPECT_EQ(printed.err, "invalid argument\ninvalid argument\ninvalid argument\n");
    EXPECT_EQ(printed.out, "");
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(OkellyAdapterModule, AuxCommandsRefuseAnEmptyList) {
    const auto printed = printed_by([&] { m_okelly.set_aux_cmds(2, 2, {}); });
    EXPECT_EQ(printed.err, "cmd list empty\n");
    EXPECT_EQ(printed.out, "");
    EXPECT_TRUE(m_registers.accesses().empty());
}

TEST_F(OkellyAdapterModule, SpiFrequencyIsSetAndItsLockWaitedFor) {
    m_registers.queue_reads(spi_clock_state, {0, 1, 2, 7, 3});
    const auto printed = printed_by([&] { m_okelly.set_spi_freq(42, 25); });
    EXPECT_EQ(m_registers.accesses(),
              (Accesses{write_of(spi_clock, (42U << 8) + 25U), write_of(triggers, 1),
                        read_of(spi_clock_state, 0), read_of(spi_clock_state, 1), read_of(spi_clock_state, 2),
                        read_of(spi_clock_state, 7), read_of(spi_clock_state, 3)}));
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(4, 10ms));
    EXPECT_EQ(printed.out, "Setting PLL freq to 84 MHz\n"
                           "Waiting for PLL to lock\nWaiting for PLL to lock\n"
                           "Waiting for PLL to lock\nWaiting for PLL to lock\n");
}

TEST_F(OkellyAdapterModule, SpiFrequencyThatLocksAtOnceWaitsForNothing) {
    m_registers.set_value(spi_clock_state, 3);
    const auto printed = printed_by([&] { m_okelly.set_spi_freq(7, 125); });
    EXPECT_TRUE(m_waiter.waits().empty());
    EXPECT_EQ(printed.out, "Setting PLL freq to 2.8 MHz\n");
}

TEST_F(OkellyAdapterModule, EnableStreamsWritesTheMaskAndKeepsTheCount) {
    m_okelly.enable_streams({0, 3, 31});
    EXPECT_EQ(m_okelly.get_enabled_stream_count(), 3U);
    EXPECT_EQ(m_registers.accesses(), (Accesses{write_of(enabled_streams, 0x8000'0009)}));
}

TEST_F(OkellyAdapterModule, EnableStreamsOfNothingSwitchesAllOff) {
    m_okelly.enable_streams({1});
    m_okelly.enable_streams({});
    EXPECT_EQ(m_okelly.get_enabled_stream_count(), 0U);
    EXPECT_EQ(m_registers.writes_to(enabled_streams), (std::vector<std::uint32_t>{2, 0}));
}

TEST_F(OkellyAdapterModule, StreamsAbove31AreCountedButNotEnabled) {
    m_okelly.enable_streams({2, 32, 4'000'000'000});
    EXPECT_EQ(m_okelly.get_enabled_stream_count(), 3U);
    EXPECT_EQ(m_registers.writes_to(enabled_streams), (std::vector<std::uint32_t>{4}));
}

} // namespace
