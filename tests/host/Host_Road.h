// Test support. A whole run of a host, from the list of devices to closing, in which every packet is
// compared with what the recording behind the box must yield. Plain functions, without a standard library and
// without exceptions, so that a host of any compiler can take them in. One thread; blocks until the packets
// are there, for ever when they are not.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::host {

// Where a run has ended.
enum Host_Road_Step {
    ROAD_EQUAL = 0,             // everything has arrived and is equal
    ROAD_BAD_EXPECTATION = 1,   // the expectation is none, or asks for more than the queues hold
    ROAD_NO_DEVICE = 2,         // getDeviceList, tryGetSlotID
    ROAD_NOT_OPENED = 3,        // openBS
    ROAD_NOT_STARTED = 4,       // start_acquisition
    ROAD_ELECTRODE_READ = 5,    // readElectrodeData
    ROAD_ELECTRODE_DIFFERS = 6, // packets of a port
    ROAD_ADC_READ = 7,          // ADC_readPackets
    ROAD_ADC_DIFFERS = 8,       // ADC packets
    ROAD_LEFT_OVER = 9,         // more packets wait than the recording yields
    ROAD_NOT_STOPPED = 10,      // stop_acquisition
    ROAD_NOT_CLOSED = 11        // closeBS
};

struct Host_Road_Result {
    Host_Road_Step step;
    int port;             // 1 to 4; 0 where no port is concerned
    std::uint32_t packet; // number of the packet, of the port or of the ADC
    std::uint32_t byte;   // of the packet's first byte that differs
};

enum Host_Road_End {
    // stop_acquisition, then closeBS: for a stream that goes on.
    END_BY_STOPPING,
    // closeBS alone: for a recording, after whose end there is no pump that could be stopped.
    END_BY_CLOSING
};

// Plays a host on the basestation in slot 0. `expectation` is the expectation file, aligned to 8 bytes.
// What was opened is closed, whatever the result.
Host_Road_Result run_host_road(const void* expectation, std::size_t size, Host_Road_End end);

} // namespace Pelgar::ORBE::host
