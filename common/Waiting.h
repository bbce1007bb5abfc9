// Layer: common. The one way in which this system waits for a fixed time. Called from the host's threads and
// the pump thread; never from the demultiplexer's threads.
#pragma once

#include <chrono>
#include <functional>

namespace Pelgar::ORBE {

// Blocks the calling thread for `duration`.
void wait_for(std::chrono::milliseconds duration);

using Waiter = std::function<void(std::chrono::milliseconds)>;

// Replaces the sleep behind `wait_for`, so that a test can count waits instead of sitting through them; an
// empty waiter puts the real sleep back. Returns the waiter that was in force. Any thread.
Waiter replace_waiter(Waiter waiter);

} // namespace Pelgar::ORBE
