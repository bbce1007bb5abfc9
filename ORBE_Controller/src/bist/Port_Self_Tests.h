// Layer: device controller, self tests. The self tests of a port. Called on the host's threads, one call at a
// time; each blocks while it runs. In simulation mode, where every register reads the same, those of the
// EEPROMs, of the probe's registers and of the link succeed without a test, and a PRBS test cannot be
// stopped.
#pragma once

#include <functional>
#include <string>

namespace Pelgar::ORBE {

class Box_Connection;
class Box_Stream;
class NP_Port_Locks;
class Probe_Bring_Up;
class Probe_Ports;

class Port_Self_Tests {
public:
    // All of them must outlive the object.
    Port_Self_Tests(const Box_Connection& box, Probe_Ports& ports, const NP_Port_Locks& locks,
                    Probe_Bring_Up& bring_up, Box_Stream& stream);

    // What these do is said with the operations of the same names in `ORBE_Controller_Library`.
    bool set_bist_signal_mode(unsigned port, bool enable);
    bool bist_start_PBRS(unsigned port);
    bool bist_stop_PBRS(unsigned port, int* errors);
    bool bist_Probe_SR(unsigned port);
    bool bist_Eeproms(unsigned port);
    bool bist_IIC(unsigned port);
    bool bist_HB(unsigned port);
    bool bist_PSB(unsigned port);
    bool bist_Signal(unsigned port);
    void set_self_test_directory(std::string directory);

    // `bist_PSB` and `bist_Signal` whatever the streams do, with the recordings of another directory (PSB_Self_Test.h,
    // Signal_Self_Test.h).
    bool execute_psb_test(unsigned port, const std::string& directory);
    bool execute_bist_signal_test(unsigned port, const std::string& directory);

private:
    bool skips_bist(const char* name) const;
    // Runs a test that needs the stream on the port; fails while streams are enabled.
    bool run_with_stream(const char* name, unsigned port, const std::function<bool()>& operation);

    const Box_Connection& m_box;
    Probe_Ports& m_ports;
    const NP_Port_Locks& m_locks;
    Probe_Bring_Up& m_bring_up;
    Box_Stream& m_stream;
    std::string m_self_test_directory;
};

} // namespace Pelgar::ORBE
