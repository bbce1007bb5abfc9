// Layer: device controller, its lowest seam. One object is one connection to a box: its register space, its
// DMA stream, and the modules of the design that sit on top. What stands behind it is the hardware, a
// simulation, or a model of the box. The host's threads use the registers, while the pump thread reads
// the stream; the two do not meet. Only the configurator's register may be used by several threads at once.
#pragma once

#include "connection/I_InputDataStream.h"
#include "connection/I_MemMapped_XDMA.h"
#include "connection/L2_ORBE_Configurator.h"
#include "connection/M_DataStream.h"
#include "fpga/AXI_Stream_Fifo_Module.h"
#include "fpga/Foreign_HW_ICAP_Module.h"
#include "fpga/GPIO_Module.h"
#include "fpga/HW_ICAP_Module.h"
#include "fpga/I_MemMapped_AXI.h"
#include "fpga/Okelly_Adapter_Module.h"
#include "fpga/SPI_Module.h"
#include "fpga/UART_Module.h"
#include "fpga/XADC_Module.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace Pelgar::ORBE {

class A_ORBE_Controller : public I_MemMapped_AXI, public I_InputDataStream, public I_MemMapped_XDMA {
public:
    // A new back-end with its modules on every call: the simulation, or the driver of this platform. Nothing
    // is opened yet.
    static std::shared_ptr<A_ORBE_Controller> get_instance(bool simulation);

    A_ORBE_Controller(const A_ORBE_Controller&) = delete;
    A_ORBE_Controller& operator=(const A_ORBE_Controller&) = delete;
    ~A_ORBE_Controller() override;

    void write_register_bytes(std::uint32_t address, std::uint8_t count, const std::uint8_t* bytes) override;

    // Connects to the box and returns whether there is one. Every back-end finds its device by itself,
    // whatever the name and the flag.
    virtual bool open_driver_connection(const std::string& device_name, bool flag) = 0;

    // Why the last attempt to connect found no box that can be used, for people: on Linux the system's reason
    // and the device's name. Empty after one that did.
    const std::string& open_failure() const { return m_open_failure; }

    // Does nothing when there is no connection.
    virtual void close_driver_connection() = 0;

    // Returns whether the back-end knows the property.
    virtual bool set_extended_property(std::uint32_t key, std::uint32_t value) = 0;

    // The modules. A reference is good as long as the controller lives; that to the UART only until the
    // connection is opened anew.
    SPI_Module& spi() const { return *m_spi; }

    GPIO_Module& np_status_gpio() const { return *m_np_status_gpio; }

    GPIO_Module& configuration_gpio() const { return *m_configuration_gpio; }

    GPIO_Module& build_timestamp_gpio() const { return *m_build_timestamp_gpio; }

    UART_Module& uart() const { return *m_uart; }

    XADC_Module& xadc() const { return *m_xadc; }

    Okelly_Adapter_Module& okelly_adapter() const { return *m_okelly_adapter; }

    AXI_Stream_Fifo_Module& axi_stream_fifo() const { return *m_axi_stream_fifo; }

    ORBE_Configurator& configurator() const { return *m_configurator; }

    M_DataStream& data_stream() const { return *m_data_stream; }

    HW_ICAP_Module& hw_icap() const { return *m_hw_icap; }

    Foreign_HW_ICAP_Module& foreign_hw_icap() const { return *m_foreign_hw_icap; }

    GPIO_Module& efuse_gpio() const { return *m_efuse_gpio; }

protected:
    // There are no modules until `create_modules` has made them.
    A_ORBE_Controller();

    // Makes all modules on top of this back-end, in the order of the members below, in place of earlier ones.
    void create_modules();

    // Makes the UART module at another address than its own, in place of the earlier one.
    void create_uart(std::uint32_t base_address);

    void set_open_failure(std::string reason) { m_open_failure = std::move(reason); }

private:
    std::shared_ptr<SPI_Module> m_spi;
    std::shared_ptr<GPIO_Module> m_np_status_gpio;
    std::shared_ptr<GPIO_Module> m_configuration_gpio;
    std::shared_ptr<GPIO_Module> m_build_timestamp_gpio;
    std::shared_ptr<UART_Module> m_uart;
    std::shared_ptr<XADC_Module> m_xadc;
    std::shared_ptr<Okelly_Adapter_Module> m_okelly_adapter;
    std::shared_ptr<AXI_Stream_Fifo_Module> m_axi_stream_fifo;
    std::shared_ptr<ORBE_Configurator> m_configurator;
    std::shared_ptr<M_DataStream> m_data_stream;
    std::shared_ptr<HW_ICAP_Module> m_hw_icap;
    std::shared_ptr<Foreign_HW_ICAP_Module> m_foreign_hw_icap;
    std::shared_ptr<GPIO_Module> m_efuse_gpio;
    std::string m_open_failure;
};

} // namespace Pelgar::ORBE
