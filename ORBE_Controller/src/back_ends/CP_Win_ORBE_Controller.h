// Layer: device controller. The box behind the Windows XDMA driver: the register BAR is mapped into the
// process, the stream is read from a device file of its own. Registers are used on the host's threads,
// without a system call; `read_stream` blocks on the pump thread.
#pragma once

#include "back_ends/DMA_Read_Request.h"
#include "back_ends/Device_Handle.h"
#include "connection/A_ORBE_Controller.h"

#include <string>

namespace Pelgar::ORBE {

class CP_Win_ORBE_Controller final : public A_ORBE_Controller {
public:
    CP_Win_ORBE_Controller() = default;
    ~CP_Win_ORBE_Controller() override;

    void write_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_register(std::uint32_t address) override;

    // Opens the device of the driver that is enumerated last. Throws std::runtime_error (see
    // Bar_Mapping_Error.h) when its register BAR cannot be mapped, and ends the process when the system
    // enumerates no devices at all.
    bool open_driver_connection(const std::string& device_name, bool flag) override;
    // Whether the BAR stays mapped is the driver's affair; the registers must not be used any more.
    void close_driver_connection() override;
    bool set_extended_property(std::uint32_t key, std::uint32_t value) override;

    bool setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                    std::uint32_t extra) override;
    std::uint32_t read_stream(std::uint64_t unused, bool complete) override;

    void write_xdma_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_xdma_register(std::uint32_t address) override;

private:
    bool open_device(Device_Handle& handle, const std::wstring& path);
    void map_bar();
    std::uint32_t read_device(std::uint8_t* buffer, std::uint32_t size) const;

    Device_Handle m_mm_handle;
    Device_Handle m_c2h_handle;
    DMA_Read_Request m_read_request;
    volatile std::uint32_t* m_bar = nullptr;
};

} // namespace Pelgar::ORBE
