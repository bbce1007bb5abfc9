// Layer: device controller. The FPGA's own analog-to-digital converter. Called on the host's threads; never
// blocks.
#pragma once

#include "fpga/A_FPGA_Module.h"

namespace Pelgar::ORBE {

class XADC_Module : public A_FPGA_Module {
public:
    XADC_Module(I_MemMapped_AXI* axi, std::uint32_t base_address);

    // Temperature of the FPGA die in degrees Celsius.
    float get_temperature() const;
};

} // namespace Pelgar::ORBE
