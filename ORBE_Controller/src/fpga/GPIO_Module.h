// Layer: device controller. A pair of plain data registers: switches, status bits and identity words of the
// design. Called on the host's threads; never blocks.
#pragma once

#include "fpga/A_FPGA_Module.h"

namespace Pelgar::ORBE {

class GPIO_Module : public A_FPGA_Module {
public:
    GPIO_Module(I_MemMapped_AXI* axi, std::uint32_t base_address);

    std::uint32_t read_data() const;
    void write_data(std::uint32_t value);

    // Reads the second channel and says so on standard output.
    std::uint32_t read_second_data() const;
};

} // namespace Pelgar::ORBE
