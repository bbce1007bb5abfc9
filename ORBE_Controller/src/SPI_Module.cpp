#include "SPI_Module.h"

namespace Pelgar::ORBE {

SPI_Module::SPI_Module(I_MemMapped_AXI* axi, std::uint32_t base_address)
    : A_FPGA_Module("SPI_Module", axi, base_address) {}

} // namespace Pelgar::ORBE
