// Test support, virtual box. The design's own configuration port: a register number, a value and a start bit;
// it reboots the FPGA when it is told to. Guarded by the register space that owns it.
#pragma once

#include <cstdint>
#include <optional>

namespace Pelgar::ORBE::test {

class Foreign_ICAP_Model {
public:
    void write_register_number(std::uint32_t number);

    // The value belongs to a register number that was written just before; another write to its address is
    // meant for the UART, which lies at the same one.
    bool takes_value() const { return m_takes_value; }

    void write_value(std::uint32_t value);

    // Carries the write out. Returns the flash address to boot from when it was the order to do so.
    std::optional<std::uint32_t> write_start(std::uint32_t value);

    std::uint32_t read_status();

    // `done` shows from the n-th read after a start on (1: at once), or never.
    void done_at_read(std::optional<unsigned> read) { m_done_at = read; }

private:
    std::uint32_t m_number = 0;
    std::uint32_t m_value = 0;
    std::uint32_t m_boot_address = 0;
    bool m_takes_value = false;
    bool m_started = false;
    unsigned m_reads = 0;
    std::optional<unsigned> m_done_at = 1;
};

} // namespace Pelgar::ORBE::test
