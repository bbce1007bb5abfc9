// Layer: façade. Entry points of the published API that this box has no use for: each logs that it was called
// and does nothing else. Called on the host's threads; none blocks.
#include "NeuropixAPI.h"

#include <loguru.hpp>

namespace Neuropixels {

NP_ErrorCode scanBS() {
    VLOG_SCOPE_F(1, "scanBS");
    VLOG_F(1, "%d", 0);
    return SUCCESS;
}

NP_ErrorCode mapBS(int serialnr, int /*slot*/) {
    VLOG_SCOPE_F(1, "mapBS");
    VLOG_F(1, "%d", serialnr);
    return SUCCESS;
}

NP_ErrorCode setParameter(np_parameter_t parameter, int /*value*/) {
    VLOG_SCOPE_F(1, "setParameter");
    VLOG_F(1, "%d", parameter);
    return SUCCESS;
}

NP_ErrorCode setSWTrigger(int slotID) {
    VLOG_SCOPE_F(1, "setSWTrigger");
    VLOG_F(1, "slotID : %d", slotID);
    return SUCCESS;
}

NP_ErrorCode setSWTriggerEx(int slotID, swtriggerflags_t /*triggerflags*/) {
    VLOG_SCOPE_F(1, "setSWTriggerEx");
    VLOG_F(1, "%d", slotID);
    return SUCCESS;
}

NP_ErrorCode readPackets(int /*slotID*/, int portID, int /*dockID*/, streamsource_t /*source*/,
                         PacketInfo* /*packetInfo*/, int16_t* /*data*/, int /*channelCount*/,
                         int /*packetCount*/, int* /*packetsRead*/) {
    VLOG_SCOPE_F(1, "readPackets");
    VLOG_F(1, "%d", portID);
    return SUCCESS;
}

NP_ErrorCode getPacketFifoStatus(int /*slotID*/, int portID, int /*dockID*/, streamsource_t /*source*/,
                                 int* /*packetsAvailable*/, int* /*headroom*/) {
    VLOG_SCOPE_F(1, "getPacketFifoStatus");
    VLOG_F(1, "%d", portID);
    return SUCCESS;
}

void np_dbg_setlevel(int level) {
    VLOG_SCOPE_F(1, "np_dbg_setlevel");
    VLOG_F(1, "%d", level);
}

} // namespace Neuropixels
