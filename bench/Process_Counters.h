// Benchmarks: what the process and its threads have used so far. Allocations and mutex locks are counted by
// functions that stand before the library's own; CPU time, context switches and memory come from the kernel,
// and are 0 where there is no Linux.
#pragma once

#include <cstdint>
#include <vector>

namespace Pelgar::ORBE::bench {

// Steady clock.
std::int64_t steady_ns();

// CPU time of the calling thread.
std::uint64_t own_cpu_ns();

// The calling thread's number in the kernel.
std::int64_t own_thread_id();

std::uint64_t allocation_count();
std::uint64_t lock_count();

// The calling thread only looks on: what it allocates and locks is not counted from now on.
void leave_own_thread_out();

struct Thread_Counters {
    std::int64_t id = 0;
    std::uint64_t cpu_ns = 0;
    std::uint64_t context_switches = 0;
};

// All threads of the process that run now, in the order in which they were started.
std::vector<Thread_Counters> thread_counters();

// Gives memory that was freed back to the system, where the C library can, so that what is measured next is
// not hidden in it.
void give_back_unused_memory();

// Bytes of memory in use.
std::uint64_t resident_bytes();

} // namespace Pelgar::ORBE::bench
