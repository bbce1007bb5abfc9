#include "connection/A_ORBE_Controller.h"

#include "common/Console.h"
#include "fpga/FPGA_Register_Map.h"

namespace Pelgar::ORBE {

namespace base_address = register_map::base_address;

A_ORBE_Controller::A_ORBE_Controller() {
    console::out("A_ORBE_Controller ctor\n");
}

A_ORBE_Controller::~A_ORBE_Controller() {
    console::out("A_ORBE_Controller dtor\n");
}

void A_ORBE_Controller::write_register_bytes(std::uint32_t address, std::uint8_t count,
                                             const std::uint8_t* bytes) {
    for (std::uint8_t i = 0; i < count; ++i) {
        write_register(address, bytes[i]);
    }
}

void A_ORBE_Controller::create_modules() {
    m_spi = std::make_shared<SPI_Module>(this, base_address::spi);
    m_np_status_gpio = std::make_shared<GPIO_Module>(this, base_address::np_status_gpio);
    m_configuration_gpio = std::make_shared<GPIO_Module>(this, base_address::configuration_gpio);
    m_build_timestamp_gpio = std::make_shared<GPIO_Module>(this, base_address::build_timestamp_gpio);
    create_uart(base_address::uart);
    m_xadc = std::make_shared<XADC_Module>(this, base_address::xadc);
    m_okelly_adapter = std::make_shared<Okelly_Adapter_Module>(this, base_address::okelly_adapter);
    m_axi_stream_fifo = std::make_shared<AXI_Stream_Fifo_Module>(this, base_address::axi_stream_fifo);
    m_configurator = std::make_shared<ORBE_Configurator>(m_configuration_gpio);
    m_data_stream = std::make_shared<M_DataStream>(this, m_configurator, this);
    m_hw_icap = std::make_shared<HW_ICAP_Module>(this, base_address::hw_icap);
    m_foreign_hw_icap = std::make_shared<Foreign_HW_ICAP_Module>(this, base_address::foreign_hw_icap);
    m_efuse_gpio = std::make_shared<GPIO_Module>(this, base_address::efuse_gpio);
}

void A_ORBE_Controller::create_uart(std::uint32_t base_address) {
    m_uart = std::make_shared<UART_Module>(this, base_address);
}

} // namespace Pelgar::ORBE
