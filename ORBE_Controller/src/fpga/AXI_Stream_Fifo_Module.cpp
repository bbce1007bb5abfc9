#include "fpga/AXI_Stream_Fifo_Module.h"

namespace Pelgar::ORBE {

AXI_Stream_Fifo_Module::AXI_Stream_Fifo_Module(I_MemMapped_AXI* axi, std::uint32_t base_address)
    : A_FPGA_Module("AXI_Stream_Fifo_Module", axi, base_address) {}

} // namespace Pelgar::ORBE
