// Layer: device controller. Brings a box into service and says which one it is: connection, FPGA design, port
// power, link locks. Called on the host's threads, before streaming starts; waits in fixed steps, as each
// says. Exceptions of the back-end pass through.
#pragma once

#include "ports/NP_Port_Locks.h"

#include <cstdint>
#include <string>

namespace Pelgar::ORBE {

class Box_Connection;
class Probe_Ports;

class Box_Bring_Up {
public:
    // Both must outlive the object.
    Box_Bring_Up(Box_Connection& box, Probe_Ports& ports) : m_box(box), m_ports(ports), m_locks(box) {}

    // See `ORBE_Controller_Library`, whose operations these are.
    bool open();
    bool check_and_switch_firmware_if_nec(bool switch_allowed);
    bool icap_boot(unsigned address);
    bool pre_init(bool one_mode);

    std::string get_design_identifier_from_fpga() const;
    std::string get_design_build_date() const;
    float get_fpga_temperature() const;
    std::uint32_t get_fpga_efuse() const;

    const NP_Port_Locks& locks() const { return m_locks; }

private:
    std::uint32_t signature() const;
    void log_fpga_identity();

    Box_Connection& m_box;
    Probe_Ports& m_ports;
    NP_Port_Locks m_locks;
};

} // namespace Pelgar::ORBE
