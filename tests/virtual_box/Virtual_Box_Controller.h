// Test support, virtual box. A back-end of the library, with the real modules on top, that is connected to a
// virtual box. Several may be made for one box, one after the other, as the library makes one a basestation.
// Threads as for every back-end.
#pragma once

#include "Virtual_Box.h"

#include <connection/A_ORBE_Controller.h>

#include <memory>
#include <string>

namespace Pelgar::ORBE::test {

class Virtual_Box_Controller final : public A_ORBE_Controller {
public:
    explicit Virtual_Box_Controller(std::shared_ptr<Virtual_Box> box);
    ~Virtual_Box_Controller() override;

    void write_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_register(std::uint32_t address) override;

    // Throws std::runtime_error("map bar ioctl failed!") when the box says so.
    bool open_driver_connection(const std::string& device_name, bool flag) override;
    void close_driver_connection() override;
    bool set_extended_property(std::uint32_t key, std::uint32_t value) override;
    bool setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                    std::uint32_t extra) override;
    std::uint32_t read_stream(std::uint64_t unused, bool complete) override;
    void write_xdma_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_xdma_register(std::uint32_t address) override;

private:
    std::shared_ptr<Virtual_Box> m_box;
    bool m_open = false;
};

} // namespace Pelgar::ORBE::test
