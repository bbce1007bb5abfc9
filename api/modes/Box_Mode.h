// Layer: façade. The box's own way: one basestation in every slot, streaming from start_acquisition to
// stop_acquisition, reads that wait for as many packets as were asked for, packets of the box's own making.
// Called on the host's threads; the reading functions block until packets are there.
#pragma once

#include "modes/A_Mode.h"

namespace Pelgar::ORBE::npoe_adapter {

class Box_Mode final : public A_Mode {
public:
    int list_devices(basestationID* list, int count) override;
    NP_ErrorCode device_info(int slotID, basestationID* info) override;
    bool find_slot(const basestationID* id, int* slotID) override;

    std::optional<NP_ErrorCode> answer_opening(int /*slotID*/) override { return std::nullopt; }

    void connect_streams(ORBE_Controller_Library& controller) override;

    void opened() override {}

    bool leave(int /*slotID*/) override { return true; }

    void turn_readers_away() override;

    NP_ErrorCode start(int slotID, int portID) override;
    NP_ErrorCode stop(int slotID, int portID) override;

    NP_ErrorCode arm(int /*slotID*/) override { return SUCCESS; }

    NP_ErrorCode read_electrode_data(int slotID, int portID, electrodePacket* packets, int* actualAmount,
                                     int requestedAmount) override;
    NP_ErrorCode electrode_fifo_state(int slotID, int portID, int* packetsAvailable, int* headroom) override;
    NP_ErrorCode read_adc_packets(int slotID, PacketInfo* packetInfo, int16_t* data, int channelCount,
                                  int packetCount, int* packetsRead) override;

    NP_ErrorCode check_port(int /*slotID*/, int /*portID*/) override { return SUCCESS; }

    NP_ErrorCode check_link(ORBE_Controller_Library& /*controller*/, int /*slotID*/,
                            int /*portID*/) override {
        return SUCCESS;
    }

    bool headstage_waits_for_port() override { return true; }

    bool detect_headstage(ORBE_Controller_Library& controller, int slotID, int portID) override;
    bool read_probe_serial_number(ORBE_Controller_Library& controller, unsigned port,
                                  unsigned long long* number) override;
    bool read_gain(ORBE_Controller_Library& controller, unsigned port, int channel, int* ap_gain,
                   int* lfp_gain) override;

    NP_ErrorCode answer(const char* /*name*/, NP_ErrorCode result, bool /*is_explained*/) override {
        return result;
    }

    int log_verbosity(const char* /*name*/) override { return 1; }

    bool twins_call_functions() override { return false; }

#define NP_FUNCTION(result, name, parameters, arguments)
#define NP_ADDITION(result, name, parameters, arguments)
#define NP_FUNCTION_BY_MODE(result, name, parameters, arguments) result name parameters override;
#define NP_UNSUPPORTED_BY_MODE(result, name, parameters, arguments) result name parameters override;
#include "NeuropixAPI_Functions.inc"
    NP_ErrorCode readHSSN(int slotID, int portID, uint64_t* sn) override;
};

} // namespace Pelgar::ORBE::npoe_adapter
