// Program orbe-play. What a host does with a port before it streams: opens it, initialises the probe,
// configures all channels, uploads the configuration and asks who is there. Called once a port; blocks on the
// probe's link.
#pragma once

#include <cstdint>
#include <string>

namespace Pelgar::ORBE::recording {

class Probe_Bring_Up {
public:
    explicit Probe_Bring_Up(int port) : m_port(port) {}

    // Whether every call succeeded. `problem` names the one that did not.
    bool run();

    const std::string& problem() const { return m_problem; }

    // Who answered: part numbers of headstage and probe, and the probe's serial number.
    std::string identity() const;

private:
    bool configure_channels();
    bool identify();
    bool succeeded(const char* name, int result);

    int m_port;
    std::string m_problem;
    std::string m_headstage;
    std::string m_probe;
    std::uint64_t m_serial_number = 0;
};

} // namespace Pelgar::ORBE::recording
