// Layer: façade. Keeps the library in memory. Called on the host's threads; does not block.
#pragma once

namespace Pelgar::ORBE::npoe_adapter {

// Keeps the module that this code is in, the library or a program that has it linked in, loaded until the
// process ends. A host may let go of the library while a basestation is open: its threads run on, and must
// have their code. The first call does it, further ones do nothing.
void pin_own_module();

} // namespace Pelgar::ORBE::npoe_adapter
