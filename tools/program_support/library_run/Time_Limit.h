// Tools, what all programs share. Keeps a library call that does not come back from keeping the program for
// ever.
#pragma once

#include <chrono>
#include <functional>

namespace Pelgar::ORBE::tools {

// Does `operation` on a thread of its own and waits for its end; what it throws is thrown here. When it has
// not ended after `limit`, calls `give_up` and ends the process at once with the exit code of a failure: the
// thread cannot be stopped, and nothing that it uses may go.
void run_within(std::chrono::milliseconds limit, const std::function<void()>& operation,
                const std::function<void()>& give_up);

} // namespace Pelgar::ORBE::tools
