// Layer: façade. The queue of one probe port's electrode packets. Pushed to by the port's NP worker thread,
// read by the host.
#pragma once

#include "NeuropixAPI.h"
#include "packets/MT_PXI_Queue.h"

namespace Pelgar::ORBE::npoe_adapter {

class MT_NP_PXI_Queue : public MT_PXI_Queue<Neuropixels::electrodePacket> {
public:
    MT_NP_PXI_Queue();
};

} // namespace Pelgar::ORBE::npoe_adapter
