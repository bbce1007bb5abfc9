// Layer: device controller. The byte channel to the headstage bridge of the port that the configurator has
// routed it to. Called on the host's threads; `receive` blocks in steps of 1 ms.
#pragma once

#include "common/Relaxed.h"
#include "fpga/A_FPGA_Module.h"

namespace Pelgar::ORBE {

class ORBE_EXPORT UART_Module : public A_FPGA_Module {
public:
    // `axi` must outlive the module.
    UART_Module(I_MemMapped_AXI* axi, std::uint32_t base_address);

    // Reads `count` bytes into `out`. The budget of `timeout_ms` is renewed with every byte; when it runs out
    // std::runtime_error("UART_Module recv timeout") is thrown and the bytes read so far stay in `out`.
    void receive(std::uint8_t* out, std::uint32_t count, std::uint32_t timeout_ms);

    // Writes `count` modulo 256 bytes into the transmit FIFO. Where left over answers are dropped, what has
    // come of one that is not trusted goes before.
    void send(const std::uint8_t* data, std::uint32_t count);

    // Off at first: the bytes are then the first of the next answer.
    void set_dropping_left_over_answers(bool drops) { m_drops_left_over_answers = drops; }

    // The last answer was not what it had to be: more of it may come, or be there. An answer for which
    // `receive` has waited in vain is not trusted anyway.
    static void distrust_answer();

    // The status register. Bits that tell of an error are reported on standard error, and nothing else comes
    // of them: a damaged byte shows in the answer of the bridge.
    std::uint32_t read_status() const;

private:
    void drop_received();

    Relaxed<bool> m_drops_left_over_answers{false};
};

} // namespace Pelgar::ORBE
