#include "fpga/XADC_Module.h"

#include "Printed.h"
#include "Register_Recorder.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Pelgar::ORBE::XADC_Module;
using Pelgar::ORBE::test::printed_by;
using Pelgar::ORBE::test::read_of;
using Pelgar::ORBE::test::Register_Access;
using Pelgar::ORBE::test::Register_Recorder;

TEST(XADCModule, PrintsItsBase) {
    Register_Recorder registers;
    const auto printed = printed_by([&] { const XADC_Module xadc(&registers, 0x800); });
    EXPECT_EQ(printed.out, "XADC_Module ctor at base adr : 800\n");
}

TEST(XADCModule, TemperatureIsTheTwelveBitValueOver504Kelvin) {
    Register_Recorder registers;
    const XADC_Module xadc(&registers, 0x800);
    registers.queue_reads(0xA00, {0x0000, 0x9770, 0x977F, 0xFFF0});
    EXPECT_EQ(xadc.get_temperature(), -273.15F);
    EXPECT_EQ(xadc.get_temperature(), static_cast<float>(0x977 * 504.0 * (1.0 / 4096) - 273.15));
    EXPECT_EQ(xadc.get_temperature(), static_cast<float>(0x977 * 504.0 * (1.0 / 4096) - 273.15));
    EXPECT_EQ(xadc.get_temperature(), static_cast<float>(0xFFF * 504.0 * (1.0 / 4096) - 273.15));
    EXPECT_EQ(registers.accesses(),
              (std::vector<Register_Access>{read_of(0xA00, 0x0000), read_of(0xA00, 0x9770),
                                            read_of(0xA00, 0x977F), read_of(0xA00, 0xFFF0)}));
}

TEST(XADCModule, BitsAboveTheValueDoNotCount) {
    Register_Recorder registers;
    const XADC_Module xadc(&registers, 0x800);
    registers.queue_reads(0xA00, {0x0001'9770, 0xFFFF'9770});
    EXPECT_EQ(xadc.get_temperature(), static_cast<float>(0x977 * 504.0 * (1.0 / 4096) - 273.15));
    EXPECT_EQ(xadc.get_temperature(), static_cast<float>(0x977 * 504.0 * (1.0 / 4096) - 273.15));
}

TEST(XADCModule, ConstantIs504NotThatOfTheDataSheet) {
    Register_Recorder registers;
    const XADC_Module xadc(&registers, 0x800);
    registers.set_value(0xA00, 0x8000);
    EXPECT_EQ(xadc.get_temperature(), static_cast<float>(252.0 - 273.15));
}

} // namespace
