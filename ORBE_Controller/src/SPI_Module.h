// Layer: device controller. The SPI master that reaches the configuration flash of the FPGA. Made with the
// back-end on the host's thread.
#pragma once

#include "A_FPGA_Module.h"

namespace Pelgar::ORBE {

class SPI_Module : public A_FPGA_Module {
public:
    SPI_Module(I_MemMapped_AXI* axi, std::uint32_t base_address);
};

} // namespace Pelgar::ORBE
