// Layer: device controller. The back-end without a box: registers print what is done to them, and the stream
// is silent, because the recording is played in above it. Called on the host's threads; never blocks.
#pragma once

#include "connection/A_ORBE_Controller.h"

namespace Pelgar::ORBE {

class CP_Sim_ORBE_Controller final : public A_ORBE_Controller {
public:
    CP_Sim_ORBE_Controller() = default;
    ~CP_Sim_ORBE_Controller() override;

    void write_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_register(std::uint32_t address) override;
    void write_register_bytes(std::uint32_t address, std::uint8_t count, const std::uint8_t* bytes) override;

    // Moves the UART to where every register read makes a headstage bridge that acknowledges everything.
    bool open_driver_connection(const std::string& device_name, bool flag) override;
    void close_driver_connection() override;
    bool set_extended_property(std::uint32_t key, std::uint32_t value) override;

    bool setup_read(std::uint8_t* buffer, std::uint32_t size, std::uint8_t flag,
                    std::uint32_t extra) override;
    std::uint32_t read_stream(std::uint64_t unused, bool complete) override;

    void write_xdma_register(std::uint32_t address, std::uint32_t value) override;
    std::uint32_t read_xdma_register(std::uint32_t address) override;
};

} // namespace Pelgar::ORBE
