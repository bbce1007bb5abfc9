// Layer: device controller. Which probe ports there are and which of their links are locked to a headstage.
// Called on the host's threads; waiting for a lock takes up to 5 s.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

class Box_Connection;

class NP_Port_Locks {
public:
    // `box` must outlive the object.
    explicit NP_Port_Locks(const Box_Connection& box) : m_box(box) {}

    // Takes the number of ports from the FPGA design's signature word.
    void set_port_count_from_signature(std::uint32_t signature);

    // What simulation mode has instead: two ports, the first of them locked.
    void simulate();

    // Reads the locks until one of the ports has one, five times a second apart; whether one has. Under the
    // log scope "check_np_ports_status".
    bool check_np_ports_status();

    // Bit i: the link of port i + 1 is locked now. One look at one register that nothing else changes, so
    // that it disturbs no stream.
    std::uint8_t status_now() const;

    // Whether the link of a port (index 0..3) is locked now.
    bool is_locked_now(unsigned port) const { return ((unsigned{status_now()} >> port) & 1U) != 0; }

    // Probe ports that the design offers; 0 before it has been asked.
    std::uint8_t port_count() const { return m_np_port_count_parameter_from_fpga; }

    // Bit i: the link of port i + 1 was locked at the last look.
    std::uint8_t cached_status() const { return m_np_port_pll_status; }

private:
    std::uint8_t port_mask() const;

    const Box_Connection& m_box;
    std::uint8_t m_np_port_count_parameter_from_fpga = 0;
    std::uint8_t m_np_port_pll_status = 0;
};

} // namespace Pelgar::ORBE
