// Tools, what all programs share. Lets a program tidy up when the user stops it (Ctrl-C, kill): the signal
// only sets a flag, which the work looks at.
#pragma once

namespace Pelgar::ORBE::tools {

// From now on SIGINT and SIGTERM set the flag instead of ending the process.
void catch_interrupts();

// Any thread.
bool interrupted();

// What a program answers that was stopped by the user.
inline constexpr int interrupted_exit_code = 130;

} // namespace Pelgar::ORBE::tools
