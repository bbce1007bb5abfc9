// Layer: device controller. The box's register space: 32-bit registers at byte addresses. Called on the
// host's threads; a register access never blocks.
#pragma once

#include "common/Export.h"

#include <cstdint>

namespace Pelgar::ORBE {

class ORBE_EXPORT I_MemMapped_AXI {
public:
    virtual void write_register(std::uint32_t address, std::uint32_t value) = 0;
    virtual std::uint32_t read_register(std::uint32_t address) = 0;

    // Writes `count` bytes, each zero-extended, one after the other to the same address: how a transmit FIFO
    // is filled.
    virtual void write_register_bytes(std::uint32_t address, std::uint8_t count,
                                      const std::uint8_t* bytes) = 0;

    virtual ~I_MemMapped_AXI() = default;
};

} // namespace Pelgar::ORBE
