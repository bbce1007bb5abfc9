#include "fpga/Foreign_HW_ICAP_Module.h"

#include "common/Console.h"
#include "common/Waiting.h"
#include "fpga/FPGA_Register_Map.h"

#include <chrono>

namespace Pelgar::ORBE {

namespace foreign_hw_icap = register_map::foreign_hw_icap;
namespace configuration_logic = register_map::configuration_logic;

namespace {

constexpr std::chrono::milliseconds done_poll_interval{100};

} // namespace

// The name is printed with a blank where the class has an underscore.
Foreign_HW_ICAP_Module::Foreign_HW_ICAP_Module(I_MemMapped_AXI* axi, std::uint32_t base_address)
    : A_FPGA_Module("Foreign HW_ICAP_Module", axi, base_address) {}

void Foreign_HW_ICAP_Module::boot(std::uint32_t address) {
    start_register_write(configuration_logic::register_warm_boot_start_address, address);
    while ((read(foreign_hw_icap::status) & foreign_hw_icap::status_done) == 0) {
        console::out("Waiting for icap_done\n");
        wait_for(done_poll_interval);
    }
    write(foreign_hw_icap::start, foreign_hw_icap::start_idle);
    // Nothing is read after this: the design that would answer is on its way out.
    start_register_write(configuration_logic::register_command, configuration_logic::command_reprogram);
}

void Foreign_HW_ICAP_Module::start_register_write(std::uint32_t register_number, std::uint32_t value) {
    write(foreign_hw_icap::register_number, register_number);
    write(foreign_hw_icap::register_value, value);
    write(foreign_hw_icap::start, foreign_hw_icap::start_run);
}

} // namespace Pelgar::ORBE
