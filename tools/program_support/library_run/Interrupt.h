// Tools, what all programs share. Lets a program tidy up when the user stops it (Ctrl-C, kill, a terminal
// that is closed): the signal only sets a flag, which the work looks at.
#pragma once

namespace Pelgar::ORBE::tools {

// From now on the signals with which users stop programs set the flag instead of ending the process. What the
// caller lets the program ignore, as nohup does, stays ignored.
void catch_interrupts();

// Any thread.
bool interrupted();

} // namespace Pelgar::ORBE::tools
