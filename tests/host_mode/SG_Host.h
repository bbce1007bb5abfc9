// Test support, host mode. An acquisition program that behaves as SpikeGLX does: asks slots for devices,
// closes before it opens, brings probes up without opening their ports, sets triggers and sync, and stops by
// closing, after its readers have ended. Any call that fails throws std::runtime_error, as it ends a run
// there.
#pragma once

#include "Host_Readers.h"

#include <NeuropixAPI.h>

#include <memory>
#include <vector>

namespace Pelgar::ORBE::test {

class SG_Host {
public:
    // The slot that the user has given the device: 2 to 18 for PXI, from 20 on for USB. The row length of the
    // line's ADC calls: 12 or 24.
    SG_Host(Neuropixels::NPPlatformID_t platform, int slot, int adc_row_length = 12)
        : m_platform(platform), m_slot(slot), m_adc_row_length(adc_row_length) {}

    ~SG_Host();
    SG_Host(const SG_Host&) = delete;
    SG_Host& operator=(const SG_Host&) = delete;

    // False when no device of the platform is in the slot.
    bool find() const;

    void open();
    void configure();
    void start();
    // Ends the readers, without a limit, and closes.
    void stop();

    // Settings of a running probe are changed and written.
    void change_settings() const;

    // For a device whose packets other software reads.
    void set_ports(std::vector<int> ports) { m_ports = std::move(ports); }

    int slot() const { return m_slot; }

    const std::vector<int>& ports() const { return m_ports; }

    Host_Readers& readers() { return *m_readers; }

private:
    void configure_probe(int port) const;

    Neuropixels::NPPlatformID_t m_platform;
    int m_slot;
    int m_adc_row_length;
    std::vector<int> m_ports{1, 2};
    std::unique_ptr<Host_Readers> m_readers;
};

} // namespace Pelgar::ORBE::test
