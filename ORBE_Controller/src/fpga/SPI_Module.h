// Layer: device controller. The SPI master that reaches the configuration flash of the FPGA. Called on the
// host's threads; polls without sleeping.
#pragma once

#include "fpga/A_FPGA_Module.h"

#include <cstdint>
#include <span>

namespace Pelgar::ORBE {

class SPI_Module : public A_FPGA_Module {
public:
    SPI_Module(I_MemMapped_AXI* axi, std::uint32_t base_address);

    // One transaction each: selects the slave, exchanges the bytes and deselects it, also on an error. A
    // command (at most 16 bytes) shares a FIFO load with what follows when both fit; otherwise it has a load
    // of its own and the rest goes in loads of 16 bytes. Throw std::runtime_error
    // ("Tx fifo should have been drained" or "Rx fifo should have been drained").

    // Writes the command and the data behind it; what comes back is discarded.
    void write_command(std::span<const std::uint8_t> command, std::span<const std::uint8_t> data = {});

    // Writes the command and fills `answer` with what comes back behind it.
    void read_command(std::span<const std::uint8_t> command, std::span<std::uint8_t> answer);

    // How often the status had to be read at most until a FIFO load was through.
    unsigned largest_transmit_polls() const { return m_largest_transmit_polls; }

private:
    // One byte out, and where the byte goes that comes back for it.
    struct Exchange {
        std::uint8_t out;
        std::uint8_t* in;
    };

    void transact(std::span<const std::uint8_t> command, std::span<const Exchange> rest);
    void exchange(std::span<const Exchange> load);
    void wait_for_transmit_fifo();
    void drain_receive_fifo();

    unsigned m_largest_transmit_polls = 0;
};

} // namespace Pelgar::ORBE
