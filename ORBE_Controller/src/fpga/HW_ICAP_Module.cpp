#include "fpga/HW_ICAP_Module.h"

#include "common/Console.h"
#include "fpga/FPGA_Register_Map.h"

#include <array>

namespace Pelgar::ORBE {

namespace hw_icap = register_map::hw_icap;
namespace configuration_logic = register_map::configuration_logic;

namespace {

constexpr int max_polls = 100;

// The configuration logic takes the boot address in the byte order of the flash.
constexpr std::uint32_t with_bytes_reversed(std::uint32_t word) {
    return (word << 24) | ((word & 0x0000'FF00) << 8) | ((word >> 8) & 0x0000'FF00) | (word >> 24);
}

} // namespace

HW_ICAP_Module::HW_ICAP_Module(I_MemMapped_AXI* axi, std::uint32_t base_address)
    : A_FPGA_Module("HW_ICAP_Module", axi, base_address) {}

bool HW_ICAP_Module::boot(std::uint32_t address) {
    const std::array<std::uint32_t, 8> commands{
        configuration_logic::packet_dummy,
        configuration_logic::packet_sync,
        configuration_logic::packet_no_operation,
        configuration_logic::packet_write_warm_boot_start_address,
        with_bytes_reversed(address),
        configuration_logic::packet_write_command,
        configuration_logic::command_reprogram,
        configuration_logic::packet_no_operation,
    };
    for (const std::uint32_t command : commands) {
        write(hw_icap::write_fifo, command);
    }
    write(hw_icap::control, hw_icap::control_write);
    if (!poll(hw_icap::status, hw_icap::status_done, true)) {
        console::err("M_HW_ICAP_Module :: write done timeout\n");
        return false;
    }
    if (!poll(hw_icap::control, hw_icap::control_write, false)) {
        console::err("M_HW_ICAP_Module :: write CR bit clear timeout\n");
        return false;
    }
    console::out("Boot cmd suceeded\n");
    return true;
}

bool HW_ICAP_Module::poll(std::uint32_t offset, std::uint32_t bit, bool set) const {
    for (int i = 0; i < max_polls; ++i) {
        if (((read(offset) & bit) != 0) == set) {
            return true;
        }
    }
    return false;
}

} // namespace Pelgar::ORBE
