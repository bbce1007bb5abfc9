// Test support, Windows. The stand-in for the XDMA driver, as the tests see it: installs and starts the
// kernel service, enters boxes in the system's registry of devices, and sends requests to the control device.
// One thread; blocks on the service manager.
#pragma once

#include "Box_Control.h"
#include "Service.h"
#include "back_ends/Device_Handle.h"

#include <cstdint>
#include <filesystem>

namespace Pelgar::ORBE::test {

class Box_Driver {
public:
    // Puts away what an earlier run may have left behind, then installs and starts the service, with the
    // driver that was built beside the running program. Throws std::system_error when that fails.
    Box_Driver();
    // Stops and removes the service, and every box.
    ~Box_Driver();
    Box_Driver(const Box_Driver&) = delete;
    Box_Driver& operator=(const Box_Driver&) = delete;

    // Enters so many boxes, 0 to 2, as present devices, and removes the rest.
    void set_present_boxes(unsigned count);

    // All of the following throw std::system_error when the driver refuses.

    // As the box is after power-up, without a recording.
    void reset(unsigned box) const;
    void set(unsigned box, Box_Setting setting, std::uint64_t value) const;
    std::uint64_t get(unsigned box, Box_Setting setting) const;
    void write_register(unsigned box, std::uint32_t address, std::uint32_t value) const;
    std::uint32_t read_register(unsigned box, std::uint32_t address) const;
    // The stream brings the bytes of this file from now on.
    void play(unsigned box, const std::filesystem::path& recording) const;

private:
    void send(std::uint32_t code, const void* request, std::uint32_t size) const;
    std::uint64_t ask(std::uint32_t code, unsigned box, std::uint32_t index) const;

    Service m_service;
    Device_Handle m_control;
};

} // namespace Pelgar::ORBE::test
