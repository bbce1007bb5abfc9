// Layer: façade. The main pump thread, which drives the controller's pump until it is told to stop. Started
// and ended on the host's threads.
#pragma once

#include <memory>

namespace Pelgar::ORBE {
class ORBE_Controller_Library;
}

namespace Pelgar::ORBE::npoe_adapter {

// Starts the pump thread on `controller`, which nobody has told to stop; slot and port only mark its log
// lines. Throws std::system_error when the system has no thread to give.
void start_pump_thread(std::shared_ptr<ORBE_Controller_Library> controller, int slotID, int portID);

// Switches the data sources off for the entry point `name`; a failure is logged.
void disable_streaming(const char* name);

// Waits for the pump thread to end, if there is one, and forgets it. Whoever comes while another one waits
// returns when it has ended as well.
void join_pump_thread();

// The same, and tells it to end.
void end_pump_thread();

// Whether there is a pump thread that has not been joined.
bool has_pump_thread();

} // namespace Pelgar::ORBE::npoe_adapter
