#include "fpga/XADC_Module.h"

#include "fpga/FPGA_Register_Map.h"

namespace Pelgar::ORBE {

namespace xadc = register_map::xadc;

namespace {

// Transfer function of the on-chip sensor: 4096 steps over 504 kelvin.
constexpr double full_scale_kelvin = 504.0;
constexpr double step = 1.0 / 4096;
constexpr double zero_celsius_kelvin = 273.15;

} // namespace

XADC_Module::XADC_Module(I_MemMapped_AXI* axi, std::uint32_t base_address)
    : A_FPGA_Module("XADC_Module", axi, base_address) {}

float XADC_Module::get_temperature() const {
    const std::uint32_t value = (read(xadc::temperature) & xadc::temperature_mask) >> xadc::temperature_shift;
    return static_cast<float>(value * full_scale_kelvin * step - zero_celsius_kelvin);
}

} // namespace Pelgar::ORBE
