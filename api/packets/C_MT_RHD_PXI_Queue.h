// Layer: façade. The queue of ADC packets. Pushed to by the RHD worker thread, read by the host.
#pragma once

#include "packets/ADC_Packet_Record.h"
#include "packets/MT_PXI_Queue.h"

namespace Pelgar::ORBE::npoe_adapter {

class MT_RHD_PXI_Queue : public MT_PXI_Queue<ADC_Packet_Record> {
public:
    MT_RHD_PXI_Queue();
};

} // namespace Pelgar::ORBE::npoe_adapter
