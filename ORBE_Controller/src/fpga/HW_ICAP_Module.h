// Layer: device controller. The FPGA's internal configuration port, through which the running design asks for
// another one to be loaded. Called on the host's threads; polls without sleeping.
#pragma once

#include "fpga/A_FPGA_Module.h"

namespace Pelgar::ORBE {

class HW_ICAP_Module : public A_FPGA_Module {
public:
    HW_ICAP_Module(I_MemMapped_AXI* axi, std::uint32_t base_address);

    // Makes the FPGA load the design at a byte address of the configuration flash. Returns whether the port
    // has taken the command; what went wrong is reported on standard error.
    bool boot(std::uint32_t address);

private:
    // Polls a register until the bit is as asked for, and returns whether it ever was.
    bool poll(std::uint32_t offset, std::uint32_t bit, bool set) const;
};

} // namespace Pelgar::ORBE
