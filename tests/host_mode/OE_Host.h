// Test support, host mode. An acquisition program that behaves as the Neuropixels plug-in of the Open Ephys
// GUI does: finds devices by its platform, searches the ports on four threads at once, starts by a trigger
// and stops by arming. Every call that the plug-in does not go on without throws std::runtime_error.
#pragma once

#include "Host_Readers.h"

#include <NeuropixAPI.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace Pelgar::ORBE::test {

class OE_Host {
public:
    // Which plug-in it is: that for PXI accepts firmware of these versions only.
    explicit OE_Host(Neuropixels::NPPlatformID_t platform) : m_platform(platform) {}

    ~OE_Host();
    OE_Host(const OE_Host&) = delete;
    OE_Host& operator=(const OE_Host&) = delete;

    // False when there is no device of the platform.
    bool find();

    void open();
    // Of the ports with a probe: identity, settings, upload. Also while data stream.
    void configure();
    void close();

    // Triggers and begins to read.
    void start();
    // Arms, on a thread of its own for PXI, while the readers read on, then ends them.
    void stop();

    const std::vector<int>& ports() const { return m_ports; }

    int slot() const { return m_slot; }

    Host_Readers& readers() { return *m_readers; }

    static constexpr int adc_row_length = 24;

private:
    void look_at_port(int port, bool& found) const;
    void configure_port(int port) const;

    Neuropixels::NPPlatformID_t m_platform;
    int m_slot = -1;
    bool m_is_open = false;
    std::vector<int> m_ports;
    std::unique_ptr<Host_Readers> m_readers;
};

} // namespace Pelgar::ORBE::test
