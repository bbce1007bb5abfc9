#include "fpga/Foreign_HW_ICAP_Module.h"

#include "Printed.h"
#include "Register_Recorder.h"
#include "Waiter_Guard.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Pelgar::ORBE::Foreign_HW_ICAP_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::Waiter_Guard;
using Pelgar::ORBE::test::write_of;

class ForeignHWICAPModule : public testing::Test {
protected:
    Register_Recorder m_registers;
    Foreign_HW_ICAP_Module m_icap{&m_registers, 0x400};
    Waiter_Guard m_waiter;
};

TEST_F(ForeignHWICAPModule, PrintsItsNameWithABlankAndItsBase) {
    const auto printed = printed_by([&] { const Foreign_HW_ICAP_Module icap(&m_registers, 0x400); });
    EXPECT_EQ(printed.out, "Foreign HW_ICAP_Module ctor at base adr : 400\n");
}

TEST_F(ForeignHWICAPModule, BootSetsTheAddressWaitsAndReprograms) {
    m_registers.queue_reads(0x40C, {0, 0xFFFF'FFFE, 1});
    const auto printed = printed_by([&] { m_icap.boot(0x00B0'0000); });
    EXPECT_EQ(m_registers.accesses(),
              (std::vector<Register_Access>{
                  write_of(0x400, 0x10), write_of(0x404, 0x00B0'0000), write_of(0x408, 1), read_of(0x40C, 0),
                  read_of(0x40C, 0xFFFF'FFFE), read_of(0x40C, 1), write_of(0x408, 0), write_of(0x400, 4),
                  write_of(0x404, 15), write_of(0x408, 1)}));
    EXPECT_EQ(m_waiter.waits(), std::vector<std::chrono::milliseconds>(2, 100ms));
    EXPECT_EQ(printed.out, "Waiting for icap_done\nWaiting for icap_done\n");
    EXPECT_EQ(printed.err, "");
}

TEST_F(ForeignHWICAPModule, BootWaitsForNothingWhenThePortIsDoneAtOnce) {
    m_registers.set_value(0x40C, 1);
    const auto printed = printed_by([&] { m_icap.boot(0x12'3400); });
    EXPECT_EQ(m_registers.writes(),
              (std::vector<Register_Access>{write_of(0x400, 0x10), write_of(0x404, 0x12'3400),
                                            write_of(0x408, 1), write_of(0x408, 0), write_of(0x400, 4),
                                            write_of(0x404, 15), write_of(0x408, 1)}));
    EXPECT_TRUE(m_waiter.waits().empty());
    EXPECT_EQ(printed.out, "");
}

TEST_F(ForeignHWICAPModule, BootHasNoLimitToItsWait) {
    m_registers.queue_reads(0x40C, std::vector<std::uint32_t>(500, 0));
    m_registers.set_value(0x40C, 1);
    m_icap.boot(0);
    EXPECT_EQ(m_waiter.count(100ms), 500U);
    EXPECT_EQ(m_registers.writes().size(), 7U);
}

} // namespace
