// Layer: device controller. What the EEPROMs of probe and headstage say of themselves. Called on the host's
// threads, one call at a time; blocks on the port's link. An error of the link is logged and answered with
// false.
#pragma once

#include <cstdint>

namespace Pelgar::ORBE {

class Box_Connection;
class Probe_Ports;

class Probe_Identity {
public:
    // Both must outlive the object.
    Probe_Identity(const Box_Connection& box, Probe_Ports& ports) : m_box(box), m_ports(ports) {}

    // What these do is said with the operations of the same names in `ORBE_Controller_Library`.
    bool readProbeSN(unsigned port, unsigned long long* sn);
    bool readProbePN(unsigned port, char* buffer, unsigned length);
    bool readHSPN(unsigned port, char* buffer, unsigned length);

    bool dump_eeprom(unsigned port, const char* path, unsigned count);
    bool dump_flex_eeprom(unsigned port, const char* path, unsigned count);
    bool dump_hs_eeprom(unsigned port, const char* path, unsigned count);

private:
    bool dump_eeprom_of_device(unsigned port, std::uint8_t device, const char* path, unsigned count);

    const Box_Connection& m_box;
    Probe_Ports& m_ports;
};

} // namespace Pelgar::ORBE
