#include "Process_Counters.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(__linux__)
#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#endif

namespace {

// One counter a thread, so that counting does not make threads wait for each other.
struct alignas(64) Counters {
    std::atomic<std::uint64_t> allocations{0};
    std::atomic<std::uint64_t> locks{0};
};

constexpr std::size_t counters_count = 256;
constinit std::array<Counters, counters_count> g_counters{};
constinit std::atomic<std::size_t> g_next{0};
constinit thread_local Counters* t_counters = nullptr;

Counters& own_counters() {
    if (t_counters == nullptr) {
        t_counters = &g_counters[g_next.fetch_add(1) % counters_count];
    }
    return *t_counters;
}

void* allocate(std::size_t size, std::size_t alignment) {
    own_counters().allocations.fetch_add(1, std::memory_order_relaxed);
#if defined(_WIN32)
    void* const memory = _aligned_malloc(size, alignment);
#else
    const std::size_t whole = (size + alignment - 1) / alignment * alignment;
    void* const memory =
        alignment <= alignof(std::max_align_t) ? std::malloc(size) : std::aligned_alloc(alignment, whole);
#endif
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void release(void* memory) noexcept {
#if defined(_WIN32)
    _aligned_free(memory);
#else
    std::free(memory);
#endif
}

} // namespace

void* operator new(std::size_t size) {
    return allocate(size, alignof(std::max_align_t));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    release(memory);
}

#if defined(__linux__)
extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    using Function = int (*)(pthread_mutex_t*);
    static constinit std::atomic<Function> real{nullptr};
    Function function = real.load(std::memory_order_relaxed);
    if (function == nullptr) {
        function = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
        real.store(function, std::memory_order_relaxed);
    }
    own_counters().locks.fetch_add(1, std::memory_order_relaxed);
    return function(mutex);
}
#endif

namespace Pelgar::ORBE::bench {

std::int64_t steady_ns() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void leave_own_thread_out() {
    static constinit Counters nowhere;
    t_counters = &nowhere;
}

std::uint64_t allocation_count() {
    std::uint64_t sum = 0;
    for (const Counters& counters : g_counters) {
        sum += counters.allocations.load(std::memory_order_relaxed);
    }
    return sum;
}

std::uint64_t lock_count() {
    std::uint64_t sum = 0;
    for (const Counters& counters : g_counters) {
        sum += counters.locks.load(std::memory_order_relaxed);
    }
    return sum;
}

#if defined(__linux__)

namespace {

std::uint64_t field(const std::filesystem::path& file, const std::string& name) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + ":")) {
            return std::strtoull(line.c_str() + name.size() + 1, nullptr, 10);
        }
    }
    return 0;
}

} // namespace

std::uint64_t own_cpu_ns() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000U +
           static_cast<std::uint64_t>(time.tv_nsec);
}

std::int64_t own_thread_id() {
    return syscall(SYS_gettid);
}

std::vector<Thread_Counters> thread_counters() {
    std::vector<Thread_Counters> threads;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        Thread_Counters thread;
        thread.id = std::stoll(entry.path().filename().string());
        std::ifstream(entry.path() / "schedstat") >> thread.cpu_ns;
        const auto status = entry.path() / "status";
        thread.context_switches =
            field(status, "voluntary_ctxt_switches") + field(status, "nonvoluntary_ctxt_switches");
        threads.push_back(thread);
    }
    std::sort(threads.begin(), threads.end(),
              [](const auto& left, const auto& right) { return left.id < right.id; });
    return threads;
}

void give_back_unused_memory() {
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}

std::uint64_t resident_bytes() {
    return field("/proc/self/status", "VmRSS") * 1024;
}

#else

std::uint64_t own_cpu_ns() {
    return 0;
}

std::int64_t own_thread_id() {
    return 0;
}

std::vector<Thread_Counters> thread_counters() {
    return {};
}

void give_back_unused_memory() {}

std::uint64_t resident_bytes() {
    return 0;
}

#endif

} // namespace Pelgar::ORBE::bench
