// Test support, virtual box. The SPI master of the design: control, status and slave select, two FIFOs of 16
// bytes, and the configuration flash on its lines. Guarded by the register space that owns it.
#pragma once

#include "SPI_Flash_Model.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace Pelgar::ORBE::test {

class SPI_Block_Model {
public:
    // Byte addresses in the register space.
    static constexpr std::uint32_t control = 0x0560;
    static constexpr std::uint32_t status = 0x0564;
    static constexpr std::uint32_t transmit = 0x0568;
    static constexpr std::uint32_t receive = 0x056C;
    static constexpr std::uint32_t slave_select = 0x0570;

    static constexpr std::size_t fifo_depth = 16;

    // Addresses of other blocks are let pass.
    void write(std::uint32_t address, std::uint32_t value);
    // Nothing for what reads as it was written, and for other blocks.
    std::optional<std::uint32_t> read(std::uint32_t address);

    // The FPGA loads a design: the block starts anew, the flash keeps what it holds.
    void reset();

    SPI_Flash_Model& flash() { return m_flash; }

    // ---- Faults.

    // Of every load the transmit FIFO shows as empty at the n-th look only (1: at once), or never.
    void transmit_empty_at_look(std::optional<unsigned> look) { m_empty_at_look = look; }

    // The receive FIFO never shows as empty.
    void let_receive_fifo_stick(bool sticks) { m_receive_sticks = sticks; }

    // That many bytes stand in the receive FIFO behind those of the next load.
    void add_extra_bytes(std::size_t count) { m_extra_bytes = count; }

    // Bytes that did not fit into a FIFO, and reads of an empty one.
    std::size_t lost_bytes() const { return m_lost_bytes; }

    std::size_t reads_of_nothing() const { return m_reads_of_nothing; }

private:
    void shift();
    std::uint32_t read_status();
    std::uint32_t read_receive();

    SPI_Flash_Model m_flash;
    std::uint32_t m_control = 0;
    bool m_selected = false;
    std::deque<std::uint8_t> m_transmit;
    std::deque<std::uint8_t> m_receive;
    unsigned m_looks = 0;
    std::optional<unsigned> m_empty_at_look = 1;
    bool m_receive_sticks = false;
    std::size_t m_extra_bytes = 0;
    std::size_t m_lost_bytes = 0;
    std::size_t m_reads_of_nothing = 0;
};

} // namespace Pelgar::ORBE::test
