// Layer: device controller. What every register module of the FPGA has in common: where it lies in the
// register space, the line it prints when it is made, and access to its registers. Takes no lock; never
// blocks.
#pragma once

#include "common/Export.h"
#include "fpga/I_MemMapped_AXI.h"

#include <cstdint>

namespace Pelgar::ORBE {

class ORBE_EXPORT A_FPGA_Module {
public:
    std::uint32_t base_address() const { return m_base_address; }

protected:
    // Prints "<class_name> ctor at base adr : <base in hexadecimal>". `axi` must outlive the module.
    A_FPGA_Module(const char* class_name, I_MemMapped_AXI* axi, std::uint32_t base_address);
    ~A_FPGA_Module() = default;

    // Registers by their byte offset from the base address.
    std::uint32_t read(std::uint32_t offset) const { return m_axi->read_register(m_base_address + offset); }

    void write(std::uint32_t offset, std::uint32_t value) {
        m_axi->write_register(m_base_address + offset, value);
    }

    void write_bytes(std::uint32_t offset, std::uint8_t count, const std::uint8_t* bytes) {
        m_axi->write_register_bytes(m_base_address + offset, count, bytes);
    }

private:
    I_MemMapped_AXI* m_axi;
    std::uint32_t m_base_address;
};

} // namespace Pelgar::ORBE
