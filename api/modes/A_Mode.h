// Layer: façade. Everything in which the ways of presenting the box differ: which devices there are, how
// streaming starts and stops, how reads wait, how packets are made, what identity is answered. One object a
// way, chosen when a basestation is opened; the entry points log their calls and ask it. Called on the host's
// threads.
#pragma once

#include "NeuropixAPI.h"
#include "controller/C_ORBE_Controller_Library.h"

#include <optional>

namespace Pelgar::ORBE::npoe_adapter {

// For the types in the tables' rows.
using namespace Neuropixels;

class A_Mode {
public:
    A_Mode() = default;
    virtual ~A_Mode() = default;
    A_Mode(const A_Mode&) = delete;
    A_Mode& operator=(const A_Mode&) = delete;

    // ---- Devices.

    virtual int list_devices(basestationID* list, int count) = 0;
    virtual NP_ErrorCode device_info(int slotID, basestationID* info) = 0;
    virtual bool find_slot(const basestationID* id, int* slotID) = 0;

    // ---- Opening and closing. Not while another call is under way, as openBS and closeBS are not.

    // What openBS answers without touching the box; nothing when the box has to be brought up.
    virtual std::optional<NP_ErrorCode> answer_opening(int slotID) = 0;
    // Makes the ends of the data road and connects them to a controller that has been brought up, but streams
    // nothing yet.
    virtual void connect_streams(ORBE_Controller_Library& controller) = 0;
    // The basestation that `answer_opening` was asked about is open.
    virtual void opened() = 0;
    // Whether closeBS has to close the box; otherwise everything is done.
    virtual bool leave(int slotID) = 0;
    // Nothing more comes: readers must not wait any longer.
    virtual void turn_readers_away() = 0;

    // ---- Streaming.

    virtual NP_ErrorCode start(int slotID, int portID) = 0;
    virtual NP_ErrorCode stop(int slotID, int portID) = 0;
    virtual NP_ErrorCode arm(int slotID) = 0;

    virtual NP_ErrorCode read_electrode_data(int slotID, int portID, electrodePacket* packets,
                                             int* actualAmount, int requestedAmount) = 0;
    virtual NP_ErrorCode electrode_fifo_state(int slotID, int portID, int* packetsAvailable,
                                              int* headroom) = 0;
    virtual NP_ErrorCode read_adc_packets(int slotID, PacketInfo* packetInfo, int16_t* data, int channelCount,
                                          int packetCount, int* packetsRead) = 0;

    // ---- Probes. Ports of the controller are indices 0..3.

    // Whether there is such a port; the result otherwise.
    virtual NP_ErrorCode check_port(int slotID, int portID) = 0;
    // The same, and that its headstage can be talked to: under the lock of the probes' link, before an
    // operation that does.
    virtual NP_ErrorCode check_link(ORBE_Controller_Library& controller, int slotID, int portID) = 0;
    // Whether readHSPN waits until a first port has been opened.
    virtual bool headstage_waits_for_port() = 0;
    virtual bool detect_headstage(ORBE_Controller_Library& controller, int slotID, int portID) = 0;
    virtual bool read_probe_serial_number(ORBE_Controller_Library& controller, unsigned port,
                                          unsigned long long* number) = 0;
    virtual bool read_gain(ORBE_Controller_Library& controller, unsigned port, int channel, int* ap_gain,
                           int* lfp_gain) = 0;

    // ---- Results.

    // Every result of an entry point passes here, with whether the call has logged an error.
    virtual NP_ErrorCode answer(const char* name, NP_ErrorCode result, bool is_explained) = 0;
    // At which verbosity the call of a function below is logged.
    virtual int log_verbosity(const char* name) = 0;
    // Whether the C twins that are only logged call their functions.
    virtual bool twins_call_functions() = 0;

    // ---- The functions that the box itself does not carry out, by their own names, with its answers.

#define NP_FUNCTION(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments)
#define NP_FUNCTION_BY_MODE(result, name, parameters, arguments) virtual result name parameters = 0;
#define NP_UNSUPPORTED_BY_MODE(result, name, parameters, arguments) virtual result name parameters = 0;
#include "NeuropixAPI_Functions.inc"
    virtual NP_ErrorCode readHSSN(int slotID, int portID, uint64_t* sn) = 0;
};

} // namespace Pelgar::ORBE::npoe_adapter
