// Layer: common. The one way in which this system waits for a time, and the clock that such waits are planned
// by. Called from the host's threads and the pump thread; never from the demultiplexer's threads.
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

// The time by which waits are planned.
std::chrono::steady_clock::time_point planning_time();

using Planning_Clock = std::function<std::chrono::steady_clock::time_point()>;

// Replaces the steady clock behind `planning_time`, as `replace_waiter` does the sleep: where waits take no
// time, time has to go on by them. Any thread.
Planning_Clock replace_planning_clock(Planning_Clock clock);

} // namespace Pelgar::ORBE
