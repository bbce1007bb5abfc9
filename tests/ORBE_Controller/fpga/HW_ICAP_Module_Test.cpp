#include "fpga/HW_ICAP_Module.h"

#include "Printed.h"
#include "Register_Recorder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using Pelgar::ORBE::HW_ICAP_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::write_of;

using Accesses = std::vector<Register_Access>;

constexpr std::uint32_t write_fifo = 0x1500;
constexpr std::uint32_t control = 0x150C;
constexpr std::uint32_t status = 0x1510;

class HWICAPModule : public testing::Test {
protected:
    Register_Recorder m_registers;
    HW_ICAP_Module m_icap{&m_registers, 0x1400};
};

Accesses boot_writes(std::uint32_t reversed_address) {
    return {write_of(write_fifo, 0xFFFF'FFFF),
            write_of(write_fifo, 0xAA99'5566),
            write_of(write_fifo, 0x2000'0000),
            write_of(write_fifo, 0x3002'0001),
            write_of(write_fifo, reversed_address),
            write_of(write_fifo, 0x3000'8001),
            write_of(write_fifo, 0x0000'000F),
            write_of(write_fifo, 0x2000'0000),
            write_of(control, 1)};
}

TEST_F(HWICAPModule, PrintsItsBase) {
    const auto printed = printed_by([&] { const HW_ICAP_Module icap(&m_registers, 0x1400); });
    EXPECT_EQ(printed.out, "HW_ICAP_Module ctor at base adr : 1400\n");
}

TEST_F(HWICAPModule, BootWritesTheCommandsAndTheAddressWithItsBytesReversed) {
    m_registers.set_value(status, 1);
    m_registers.queue_reads(control, {0});
    const auto printed = printed_by([&] { EXPECT_TRUE(m_icap.boot(0x1234'56F8)); });
    Accesses expected = boot_writes(0xF856'3412);
    expected.push_back(read_of(status, 1));
    expected.push_back(read_of(control, 0));
    EXPECT_EQ(m_registers.accesses(), expected);
    EXPECT_EQ(printed.out, "Boot cmd suceeded\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(HWICAPModule, OnlyBitZeroOfStatusAndControlCounts) {
    m_registers.queue_reads(status, {0xFFFF'FFFE, 0x1});
    m_registers.queue_reads(control, {0xFFFF'FFFF, 0xFFFF'FFFE});
    const auto printed = printed_by([&] { EXPECT_TRUE(m_icap.boot(0)); });
    Accesses expected = boot_writes(0);
    expected.insert(expected.end(), {read_of(status, 0xFFFF'FFFE), read_of(status, 0x1),
                                     read_of(control, 0xFFFF'FFFF), read_of(control, 0xFFFF'FFFE)});
    EXPECT_EQ(m_registers.accesses(), expected);
    EXPECT_EQ(printed.out, "Boot cmd suceeded\n");
}

TEST_F(HWICAPModule, WriteThatIsNeverDoneIsGivenUpAfter100Reads) {
    m_registers.set_value(status, 0);
    const auto printed = printed_by([&] { EXPECT_FALSE(m_icap.boot(0xB0'0000)); });
    Accesses expected = boot_writes(0x0000'B000);
    expected.insert(expected.end(), 100, read_of(status, 0));
    EXPECT_EQ(m_registers.accesses(), expected);
    EXPECT_EQ(printed.err, "M_HW_ICAP_Module :: write done timeout\n");
    EXPECT_EQ(printed.out, "");
}

TEST_F(HWICAPModule, WriteThatIsDoneAtTheHundredthReadIsInTime) {
    m_registers.queue_reads(status, std::vector<std::uint32_t>(99, 0));
    m_registers.set_value(status, 1);
    m_registers.queue_reads(control, std::vector<std::uint32_t>(99, 1));
    m_registers.queue_reads(control, {0});
    EXPECT_TRUE(m_icap.boot(0));
    EXPECT_EQ(m_registers.accesses().size(), 9U + 100U + 100U);
}

TEST_F(HWICAPModule, ControlBitThatStaysSetIsGivenUpAfter100Reads) {
    m_registers.set_value(status, 1);
    const auto printed = printed_by([&] { EXPECT_FALSE(m_icap.boot(0)); });
    Accesses expected = boot_writes(0);
    expected.push_back(read_of(status, 1));
    expected.insert(expected.end(), 100, read_of(control, 1));
    EXPECT_EQ(m_registers.accesses(), expected);
    EXPECT_EQ(printed.err, "M_HW_ICAP_Module :: write CR bit clear timeout\n");
    EXPECT_EQ(printed.out, "");
}

} // namespace
