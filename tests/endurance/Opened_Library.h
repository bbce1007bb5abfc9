// Endurance test. Opens, starts and closes as a host does, in the box's own mode or in the host mode. A call
// that fails throws std::runtime_error. The main thread.
#pragma once

#include "Packet_Layout.h"

namespace Pelgar::ORBE::test {

class Opened_Library {
public:
    Opened_Library(Packet_Layout layout, unsigned ports) : m_layout(layout), m_ports(ports) {}

    // The device that a host of this kind reads.
    int slot() const;

    // Finds the device, opens it and brings the probes up.
    void open() const;

    void start() const;

    // Of the host mode, which stops without closing.
    void stop() const;

    void close() const;

private:
    void open_own() const;
    void open_host() const;

    Packet_Layout m_layout;
    unsigned m_ports;
};

} // namespace Pelgar::ORBE::test
