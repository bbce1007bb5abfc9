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
    Port_Self_Tests(Box_Connection& box, Probe_Ports& ports, const NP_Port_Locks& locks,
                    Probe_Bring_Up& bring_up, Box_Stream& stream);

    // The test signal into the pixels, or back to recording.
    bool set_bist_signal_mode(unsigned port, bool enable);
    // Pseudo-random bits over the headstage's link; `*errors` is the number of wrong ones.
    bool bist_start_PBRS(unsigned port);
    bool bist_stop_PBRS(unsigned port, int* errors);
    // Uploads the configuration and has the probe check it.
    bool bist_Probe_SR(unsigned port);
    // Reads the first 16 bytes of both EEPROMs twice and compares.
    bool bist_Eeproms(unsigned port);
    // Writes two patterns into a test register of the probe, reads them back and restores the register.
    bool bist_IIC(unsigned port);
    // Whether the port's link is locked now.
    bool bist_HB(unsigned port);
    // Whether the probe's test pattern arrives on all channels, and whether the test signal is seen on all of
    // them. Both take the stream for themselves and fail while streams are enabled; they leave the probe in
    // its test mode and, unless the error level is raised, the streams off. In simulation mode they judge a
    // recording.
    bool bist_PSB(unsigned port);
    bool bist_Signal(unsigned port);
    // Where those two find their recordings when no stream has been prepared yet; at first the build's
    // resource directory.
    void set_self_test_directory(std::string directory);

    // The last two whatever the streams do, with the recordings of another directory (PSB_Self_Test.h,
    // Signal_Self_Test.h).
    bool execute_psb_test(unsigned port, const std::string& directory);
    bool execute_bist_signal_test(unsigned port, const std::string& directory);

private:
    bool skips_bist(const char* name) const;
    // Runs a test that needs the stream on the port; fails while streams are enabled.
    bool run_with_stream(const char* name, unsigned port, const std::function<bool()>& operation);

    Box_Connection& m_box;
    Probe_Ports& m_ports;
    const NP_Port_Locks& m_locks;
    Probe_Bring_Up& m_bring_up;
    Box_Stream& m_stream;
    std::string m_self_test_directory;
};

} // namespace Pelgar::ORBE
