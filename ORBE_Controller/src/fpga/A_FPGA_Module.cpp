#include "fpga/A_FPGA_Module.h"

#include "common/Console.h"

namespace Pelgar::ORBE {

A_FPGA_Module::A_FPGA_Module(const char* class_name, I_MemMapped_AXI* axi, std::uint32_t base_address)
    : m_axi(axi), m_base_address(base_address) {
    console::out(class_name, " ctor at base adr : ", console::Hex{base_address}, "\n");
}

} // namespace Pelgar::ORBE
