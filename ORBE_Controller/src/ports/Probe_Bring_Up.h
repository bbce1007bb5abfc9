// Layer: device controller. Brings the probe of a port into service: link check, initialisation, upload of
// the configuration. Called on the host's threads, one call at a time; blocks on the port's link. An error of
// the link is logged and answered with false.
#pragma once

#include "ports/E_ORBE_Init_Config.h"

namespace Pelgar::ORBE {

class Box_Connection;
class Probe_Ports;

class Probe_Bring_Up {
public:
    // Both must outlive the object.
    Probe_Bring_Up(Box_Connection& box, Probe_Ports& ports) : m_box(box), m_ports(ports) {}

    // What these do is said with the operations of the same names in `ORBE_Controller_Library`.
    bool probe_init_part_1(unsigned port);
    bool probe_init_part_2(unsigned port, E_ORBE_Init_Config init_config);
    bool writeProbeConfiguration(unsigned port, bool readcheck);

private:
    bool check_link(unsigned port);
    bool np_control_init(unsigned port, E_ORBE_Init_Config init_config);

    Box_Connection& m_box;
    Probe_Ports& m_ports;
};

} // namespace Pelgar::ORBE
