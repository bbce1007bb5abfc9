#include "back_ends/CP_Sim_ORBE_Controller.h"

#include "common/Console.h"
#include "fpga/FPGA_Register_Map.h"

namespace Pelgar::ORBE {

namespace uart = register_map::uart;

namespace {

constexpr std::uint32_t uart_base_address = 0x0;
constexpr std::uint32_t acknowledge = 0xC3;

} // namespace

CP_Sim_ORBE_Controller::~CP_Sim_ORBE_Controller() {
    console::out("CP_Sim_ORBE_Controller dtor, closing driver connection\n");
    CP_Sim_ORBE_Controller::close_driver_connection();
}

void CP_Sim_ORBE_Controller::write_register(std::uint32_t address, std::uint32_t value) {
    console::out("CP_Sim_MemMapped_AXI write_register. ", console::Hex{address}, ":", console::Hex{value},
                 "\n");
}

std::uint32_t CP_Sim_ORBE_Controller::read_register(std::uint32_t address) {
    switch (address) {
    case uart_base_address + uart::status:
        return uart::status_receive_data_valid;
    case uart_base_address + uart::receive_data:
        return acknowledge;
    default:
        console::out("CP_Sim_MemMapped_AXI read_register. ", console::Hex{address}, "\n");
        return acknowledge;
    }
}

void CP_Sim_ORBE_Controller::write_register_bytes(std::uint32_t /*address*/, std::uint8_t /*count*/,
                                                  const std::uint8_t* /*bytes*/) {}

bool CP_Sim_ORBE_Controller::open_driver_connection(const std::string& /*device_name*/, bool /*flag*/) {
    create_uart(uart_base_address);
    return true;
}

void CP_Sim_ORBE_Controller::close_driver_connection() {
    console::out("CP_Sim_ORBE_Controller::close_driver_connection\n");
}

bool CP_Sim_ORBE_Controller::set_extended_property(std::uint32_t key, std::uint32_t value) {
    console::out("CP_Sim_ORBE_Controller::set_extended_property ", key, " : ", value, "\n");
    return true;
}

bool CP_Sim_ORBE_Controller::setup_read(std::uint8_t* /*buffer*/, std::uint32_t /*size*/,
                                        std::uint8_t /*flag*/, std::uint32_t /*extra*/) {
    return false;
}

std::uint32_t CP_Sim_ORBE_Controller::read_stream(std::uint64_t /*unused*/, bool /*complete*/) {
    return 0;
}

void CP_Sim_ORBE_Controller::write_xdma_register(std::uint32_t /*address*/, std::uint32_t /*value*/) {}

std::uint32_t CP_Sim_ORBE_Controller::read_xdma_register(std::uint32_t /*address*/) {
    return 0;
}

} // namespace Pelgar::ORBE
