// Layer: device controller. The configuration port of the box's own design, which is there to load the
// Neuropixels design while another design runs. Called on the host's threads; `boot` blocks.
#pragma once

#include "fpga/A_FPGA_Module.h"

namespace Pelgar::ORBE {

class Foreign_HW_ICAP_Module : public A_FPGA_Module {
public:
    Foreign_HW_ICAP_Module(I_MemMapped_AXI* axi, std::uint32_t base_address);

    // Makes the FPGA load the design at a byte address of the configuration flash. Blocks, without limit and
    // in steps of 100 ms, until the port has taken the boot address.
    void boot(std::uint32_t address);

private:
    void start_register_write(std::uint32_t register_number, std::uint32_t value);
};

} // namespace Pelgar::ORBE
