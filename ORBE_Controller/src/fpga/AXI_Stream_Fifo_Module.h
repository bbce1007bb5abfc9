// Layer: device controller. The stream FIFO block of the design, which has its place in the register space
// but no operation that the acquisition needs. Made with the back-end on the host's thread.
#pragma once

#include "fpga/A_FPGA_Module.h"

namespace Pelgar::ORBE {

class AXI_Stream_Fifo_Module : public A_FPGA_Module {
public:
    AXI_Stream_Fifo_Module(I_MemMapped_AXI* axi, std::uint32_t base_address);
};

} // namespace Pelgar::ORBE
