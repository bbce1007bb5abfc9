// Layer: façade. Scheduling priority of the calling thread.
#pragma once

namespace Pelgar::ORBE::npoe_adapter {

// Raises the calling thread one step above normal, so that the DMA stream is drained before the box's buffers
// overflow, and logs the outcome. A system that refuses leaves the thread as it is.
void raise_own_thread_priority();

} // namespace Pelgar::ORBE::npoe_adapter
