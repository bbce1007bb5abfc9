// Layer: façade. Starting and stopping acquisition, and handing packets to the host. Called on the host's
// threads, the reading functions usually on one thread a port. How they wait is the mode's.
#include "NeuropixAPI.h"

#include "modes/Current_Mode.h"

#include <loguru.hpp>

namespace Neuropixels {

using namespace Pelgar::ORBE::npoe_adapter;

NP_ErrorCode start_acquisition(int slotID, int portID) {
    LOG_SCOPE_F(INFO, "start_acquisition");
    LOG_F(INFO, "starting acquisition : slotID : %d, portID : %d", slotID, portID);
    const Result_Answer answer("start_acquisition");
    return answer(current_mode().start(slotID, portID));
}

NP_ErrorCode stop_acquisition(int slotID, int portID) {
    LOG_SCOPE_F(INFO, "stop_acquisition");
    LOG_F(INFO, "slotID : %d, portID : %d", slotID, portID);
    const Result_Answer answer("stop_acquisition");
    return answer(current_mode().stop(slotID, portID));
}

NP_ErrorCode readElectrodeData(int slotID, int portID, int /*dockID*/, electrodePacket* packets,
                               int* actualAmount, int requestedAmount) {
    const Result_Answer answer("readElectrodeData");
    return answer(current_mode().read_electrode_data(slotID, portID, packets, actualAmount, requestedAmount));
}

NP_ErrorCode getElectrodeDataFifoState(int slotID, int portID, int /*dockID*/, int* packetsAvailable,
                                       int* headroom) {
    const Result_Answer answer("getElectrodeDataFifoState");
    return answer(current_mode().electrode_fifo_state(slotID, portID, packetsAvailable, headroom));
}

NP_ErrorCode ADC_readPackets(int slotID, PacketInfo* packetInfo, int16_t* data, int channelCount,
                             int packetCount, int* packetsRead) {
    const Result_Answer answer("ADC_readPackets");
    return answer(
        current_mode().read_adc_packets(slotID, packetInfo, data, channelCount, packetCount, packetsRead));
}

} // namespace Neuropixels
