// Layer: façade. Puts the mode in force that the switch file in the working directory asks for. Called on the
// host's threads, not while another call is under way; blocks for the file system only.
#pragma once

namespace Pelgar::ORBE::npoe_adapter {

// False, with the reason in the log and the mode as it was, when the file asks for nothing that there is.
// What another mode streams ends.
bool choose_mode();

// The same while no basestation is open; otherwise leaves the mode as it is, and is true. Waits for an
// opening or a closing that is under way. Any thread.
bool choose_mode_while_closed();

} // namespace Pelgar::ORBE::npoe_adapter
