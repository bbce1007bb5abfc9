// Layer: façade. What becomes of the library in a process that is forked off a host. Of the host's threads
// the new process has the one that forked alone, so that nothing in it would ever hand a lock back, end a
// pump or empty a queue. Called on the host's threads; nothing blocks.
#pragma once

namespace Pelgar::ORBE::npoe_adapter {

// From now on a process that is forked off this one begins without a basestation: it leaves the objects and
// locks of its parent alone and has new ones of its own. The first call does it, further ones do nothing.
// There is nothing to do on Windows.
void guard_forks();

// Whether this process, or one that it descends from, was forked while a basestation was open. The box stays
// with the process that has opened it; one that was forked before may open it as any other.
bool basestation_is_a_parents();

} // namespace Pelgar::ORBE::npoe_adapter
