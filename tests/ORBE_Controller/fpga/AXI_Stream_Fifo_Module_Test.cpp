#include "fpga/AXI_Stream_Fifo_Module.h"

#include "Printed.h"
#include "Register_Recorder.h"

#include <gtest/gtest.h>

namespace {

using Pelgar::ORBE::AXI_Stream_Fifo_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::Register_Recorder;

TEST(AXIStreamFifoModule, PrintsItsBaseAndTouchesNothing) {
    Register_Recorder registers;
    const auto printed = printed_by([&] {
        const AXI_Stream_Fifo_Module fifo(&registers, 0x1200);
        EXPECT_EQ(fifo.base_address(), 0x1200U);
    });
    EXPECT_EQ(printed.out, "AXI_Stream_Fifo_Module ctor at base adr : 1200\n");
    EXPECT_TRUE(registers.accesses().empty());
}

} // namespace
