// Layer: device controller. The registers of the DMA engine itself, apart from those of the design behind it.
// Called on the host's threads; never blocks.
#pragma once

#include "common/Export.h"

#include <cstdint>

namespace Pelgar::ORBE {

class ORBE_EXPORT I_MemMapped_XDMA {
public:
    virtual void write_xdma_register(std::uint32_t address, std::uint32_t value) = 0;
    virtual std::uint32_t read_xdma_register(std::uint32_t address) = 0;

protected:
    ~I_MemMapped_XDMA() = default;
};

} // namespace Pelgar::ORBE
