#include "fpga/GPIO_Module.h"

#include "Printed.h"
#include "Register_Recorder.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Pelgar::ORBE::GPIO_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::Register_Recorder;
using Pelgar::ORBE::test::write_of;

TEST(GPIOModule, PrintsItsBaseInHexadecimal) {
    Register_Recorder registers;
    const auto printed = printed_by([&] { const GPIO_Module gpio(&registers, 0x1600); });
    EXPECT_EQ(printed.out, "GPIO_Module ctor at base adr : 1600\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_TRUE(registers.accesses().empty());
}

TEST(GPIOModule, DataRegisterLiesAtTheBase) {
    Register_Recorder registers;
    GPIO_Module gpio(&registers, 0x200);
    registers.set_value(0x200, 0xF);
    const auto printed = printed_by([&] {
        EXPECT_EQ(gpio.read_data(), 0xFU);
        gpio.write_data(0xFFFF'FFFF);
    });
    EXPECT_EQ(registers.accesses(),
              (std::vector<Register_Access>{read_of(0x200, 0xF), write_of(0x200, 0xFFFF'FFFF)}));
    EXPECT_EQ(printed.out, "");
}

TEST(GPIOModule, SecondDataRegisterLiesEightBytesOnAndTellsOfItsReads) {
    Register_Recorder registers;
    const GPIO_Module gpio(&registers, 0x200);
    registers.set_value(0x208, 0x4E50'0040);
    const auto printed = printed_by([&] { EXPECT_EQ(gpio.read_second_data(), 0x4E50'0040U); });
    EXPECT_EQ(printed.out, "GPIO Second data at adres : 0x208\n");
    EXPECT_EQ(registers.accesses(), (std::vector<Register_Access>{read_of(0x208, 0x4E50'0040)}));
}

} // namespace
