// Layer: device controller. The Intan RHD interface of the box, addressed by the endpoints of the Opal Kelly
// host interface that it grew from. Called on the host's threads; only `set_spi_freq` blocks.
#pragma once

#include "fpga/A_FPGA_Module.h"

#include <set>
#include <vector>

namespace Pelgar::ORBE {

class ORBE_EXPORT Okelly_Adapter_Module : public A_FPGA_Module {
public:
    Okelly_Adapter_Module(I_MemMapped_AXI* axi, std::uint32_t base_address);

    // Whether the acquisition runs until it is stopped, instead of for the maximum time step.
    void set_continous_mode(bool on);
    void set_max_time_step(unsigned time_step);

    // Sets the MISO sampling delay (4 bits, in steps of the fast clock) of one SPI port, and that of all the
    // other ports to 0.
    void set_miso_delay(unsigned port, unsigned delay);

    void set_ttl_out_value(unsigned value);
    unsigned get_ttl_in_value() const;

    // Starts the acquisition state machine.
    void trigger_fsm();

    // Writes one auxiliary command into the command RAM of a slot.
    void update_bank_cmd(std::uint8_t bank, std::uint16_t index, std::uint16_t command, std::uint8_t slot);

    // Writes a whole list of auxiliary commands and its end index. Bank and slot are 0 to 2; other ones, and
    // an empty list, are reported on standard error and change nothing.
    void set_aux_cmds(std::uint8_t bank, std::uint8_t slot, const std::vector<std::uint16_t>& commands);

    // Sets the clock of the RHD SPI buses to m / d times 50 MHz and blocks, without limit and in steps of
    // 10 ms, until its PLL has locked.
    void set_spi_freq(std::uint8_t m, std::uint8_t d);

    // Enables exactly the streams 0 to 31 that `streams` holds.
    void enable_streams(const std::set<unsigned>& streams);

    // The size of the set that was enabled last; 0 before.
    unsigned get_enabled_stream_count() const { return m_enabled_stream_count; }

private:
    std::uint32_t read_endpoint(std::uint8_t endpoint) const;
    void write_endpoint(std::uint8_t endpoint, std::uint32_t value);

    unsigned m_enabled_stream_count = 0;
};

} // namespace Pelgar::ORBE
