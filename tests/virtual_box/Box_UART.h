// Test support, virtual box. The one UART of the probe links: bytes go to the bridge of the selected port,
// its answers wait in the receive FIFO. Guarded by the register space that owns it.
#pragma once

#include "Probe_Port.h"

#include <cstddef>
#include <cstdint>
#include <deque>

namespace Pelgar::ORBE::test {

class Box_UART {
public:
    void transmit(std::uint8_t byte, Probe_Port& port);
    // A late answer is there when the driver has looked so often that it has given up waiting.
    std::uint32_t read_status();

    // A read of the empty FIFO answers 0 and is counted.
    std::uint32_t receive();

    void reset() {
        m_received.clear();
        m_late.clear();
    }

    // Bytes that nobody has taken, and reads that found none.
    std::size_t unread() const { return m_received.size(); }

    std::size_t reads_of_nothing() const { return m_reads_of_nothing; }

private:
    std::deque<std::uint8_t> m_received;
    std::deque<std::uint8_t> m_late; // not here yet
    unsigned m_looks_until_late = 0;
    std::size_t m_reads_of_nothing = 0;
};

} // namespace Pelgar::ORBE::test
