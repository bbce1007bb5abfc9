// Program orbe-play. Asks the system to let the calling thread run as soon as it has something to do, as far
// as the user's rights go. Never fails: without the rights everything stays as it is.
#pragma once

namespace Pelgar::ORBE::recording {

void make_this_thread_prompt();

} // namespace Pelgar::ORBE::recording
