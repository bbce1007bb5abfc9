// Layer: device controller. The box behind the Linux XDMA driver: the register BAR is mapped into the
// process, the stream is read from a device file of its own. Registers are used on the host's threads,
// without a system call; `read_stream` blocks on the pump thread.
#pragma once

#include "back_ends/DMA_Read_Request.h"
#include "back_ends/File_Descriptor.h"
#include "connection/A_ORBE_Controller.h"

#include <cstddef>
#include <string>

namespace Pelgar::ORBE {

// A device that cannot be opened or mapped is named with the system's reason. A failing read is told in the
// same words as on Windows, with errno in the place of the Windows error code, so that who reads them looks
// for one text on both. The lines that name the platform or the class name Linux: the destructor's, those
// about the registers of the DMA engine and the one about extended properties.
class CP_Linux_ORBE_Controller : public A_ORBE_Controller {
public:
    // The driver makes its device files in `device_folder`.
    explicit CP_Linux_ORBE_Controller(std::string device_folder = "/dev");
    ~CP_Linux_ORBE_Controller() override;

    void write_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_register(std::uint32_t address) override;

    // Opens the last device of the driver, that of the highest number; a link counts as a device. Throws
    // std::runtime_error when its register BAR cannot be mapped.
    bool open_driver_connection(const std::string& device_name, bool flag) override;
    // The BAR stays mapped until the next connection replaces it.
    void close_driver_connection() override;
    bool set_extended_property(std::uint32_t key, std::uint32_t value) override;

    bool setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                    std::uint32_t extra) override;
    std::uint32_t read_stream(std::uint64_t unused, bool complete) override;

    void write_xdma_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_xdma_register(std::uint32_t address) override;

private:
    bool open_device(File_Descriptor& handle, const std::string& path);
    void map_bar(const std::string& path);
    void unmap_bar();
    std::uint32_t read_device(std::uint8_t* buffer, std::uint32_t size) const;

    std::string m_device_folder;
    File_Descriptor m_mm_handle;
    File_Descriptor m_c2h_handle;
    DMA_Read_Request m_read_request;
    volatile std::uint32_t* m_bar = nullptr;
    std::size_t m_bar_size = 0; // in bytes
};

} // namespace Pelgar::ORBE
