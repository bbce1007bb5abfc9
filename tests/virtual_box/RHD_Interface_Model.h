// Test support, virtual box. The registers of the RHD interface that do something: mode, data streams, the
// SPI clock and the triggers. Guarded by the register space that owns it.
#pragma once

#include <cstdint>
#include <optional>

namespace Pelgar::ORBE::test {

class RHD_Interface_Model {
public:
    // Byte addresses in the register space.
    static constexpr std::uint32_t mode = 0x1000;
    static constexpr std::uint32_t enabled_streams = 0x1050;
    static constexpr std::uint32_t ttl_out = 0x1054;
    static constexpr std::uint32_t ttl_in = 0x108C;
    static constexpr std::uint32_t spi_clock_state = 0x1090;
    static constexpr std::uint32_t triggers = 0x10A0;
    static constexpr std::uint32_t acquisition_trigger = 0x10A4;

    void write(std::uint32_t address, std::uint32_t value);

    std::uint32_t read_spi_clock_state() const { return m_spi_clock_locked ? locked : 0; }

    // How many data streams the running acquisition has; none when it does not run.
    std::optional<unsigned> running_streams() const;

    void let_spi_clock_lock(bool locks) { m_spi_clock_locks = locks; }

private:
    static constexpr std::uint32_t locked = 3;

    bool m_continuous = false;
    bool m_triggered = false;
    unsigned m_streams = 0;
    bool m_spi_clock_locked = true;
    bool m_spi_clock_locks = true;
};

} // namespace Pelgar::ORBE::test
