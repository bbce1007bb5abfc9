#include "SPI_Module.h"

#include "Printed.h"
#include "Register_Recorder.h"

#include <gtest/gtest.h>

namespace {

using Pelgar::ORBE::SPI_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::Register_Recorder;

TEST(SPIModule, PrintsItsBaseAndTouchesNothingWhenMade) {
    Register_Recorder registers;
    const auto printed = printed_by([&] {
        const SPI_Module spi(&registers, 0x500);
        EXPECT_EQ(spi.base_address(), 0x500U);
    });
    EXPECT_EQ(printed.out, "SPI_Module ctor at base adr : 500\n");
    EXPECT_TRUE(registers.accesses().empty());
}

} // namespace
