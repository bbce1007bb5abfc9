// Layer: façade. Scheduling priority of the calling thread.
#pragma once

namespace Pelgar::ORBE::npoe_adapter {

// Asks the system to raise the calling thread one step above normal. 0, or the system's error code.
int request_above_normal_priority();

// Raises the calling thread one step above normal, so that the DMA stream is drained before the box's buffers
// overflow, and logs the outcome. A system that refuses leaves the thread as it is. Tests put another system
// in its place.
void raise_own_thread_priority(int (*request)() = request_above_normal_priority);

} // namespace Pelgar::ORBE::npoe_adapter
