#include "fpga/GPIO_Module.h"

#include "common/Console.h"
#include "fpga/FPGA_Register_Map.h"

namespace Pelgar::ORBE {

namespace gpio = register_map::gpio;

GPIO_Module::GPIO_Module(I_MemMapped_AXI* axi, std::uint32_t base_address)
    : A_FPGA_Module("GPIO_Module", axi, base_address) {}

std::uint32_t GPIO_Module::read_data() const {
    return read(gpio::data);
}

void GPIO_Module::write_data(std::uint32_t value) {
    write(gpio::data, value);
}

std::uint32_t GPIO_Module::read_second_data() const {
    console::out("GPIO Second data at adres : 0x", console::Hex{base_address() + gpio::second_data}, "\n");
    return read(gpio::second_data);
}

} // namespace Pelgar::ORBE
