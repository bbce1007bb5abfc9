#include "Opened_Library.h"

#include "ADC_Judge.h"
#include "Host_Call.h"
#include "Host_Files.h"

#include <NeuropixAPI.h>

namespace Pelgar::ORBE::test {

namespace {

using namespace Neuropixels;

constexpr int own_slot = 0;
constexpr int usb_slot = 20;
constexpr int dock = 1;
constexpr int host_inputs = 12;

} // namespace

int Opened_Library::slot() const {
    return m_layout == Packet_Layout::own ? own_slot : usb_slot;
}

void Opened_Library::open() const {
    m_layout == Packet_Layout::own ? open_own() : open_host();
    for (int port = 1; port <= static_cast<int>(m_ports); ++port) {
        HOST_MUST(openPort(slot(), port));
        HOST_MUST(openProbe(slot(), port, dock));
        HOST_MUST(init(slot(), port, dock));
        HOST_MUST(writeProbeConfiguration(slot(), port, dock, true));
    }
}

void Opened_Library::open_own() const {
    basestationID id{};
    HOST_MUST(getDeviceList(&id, 1) == 1);
    HOST_MUST(openBS(slot()));
}

void Opened_Library::open_host() const {
    select_host_mode("usb");
    basestationID id{};
    HOST_MUST(scanBS());
    HOST_MUST(getDeviceList(&id, 1) == 1);
    HOST_MUST(mapBS(id.ID, slot()));
    HOST_MUST(openBS(slot()));
    HOST_MUST(ADC_enableProbe(slot(), true));
    for (int input = 0; input < host_inputs; ++input) {
        HOST_MUST(ADC_setComparatorThreshold(slot(), input, 0.0, 0.0));
    }
}

void Opened_Library::start() const {
    if (m_layout == Packet_Layout::own) {
        HOST_MUST(start_acquisition(slot(), 1));
    } else {
        HOST_MUST(arm(slot()));
        HOST_MUST(setSWTrigger(slot()));
    }
}

void Opened_Library::stop() const {
    HOST_MUST(arm(slot()));
}

void Opened_Library::close() const {
    HOST_MUST(closeBS(slot()));
}

} // namespace Pelgar::ORBE::test
