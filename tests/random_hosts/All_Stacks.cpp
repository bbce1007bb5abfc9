#include "All_Stacks.h"

#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

#include <execinfo.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Pelgar::ORBE::test {

namespace {

constexpr int stack_signal = SIGUSR2;
constexpr int most_frames = 64;
constexpr auto patience = std::chrono::seconds(2);

std::atomic<int> g_printed{0};

void print_own_stack(int /*signal*/) {
    std::array<void*, most_frames> frames;
    backtrace_symbols_fd(frames.data(), backtrace(frames.data(), most_frames), STDERR_FILENO);
    ++g_printed;
}

} // namespace

void print_all_stacks() {
    struct sigaction action = {};
    action.sa_handler = print_own_stack;
    sigaction(stack_signal, &action, nullptr);
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        const std::string id = task.path().filename().string();
        int number = 0;
        std::from_chars(id.data(), id.data() + id.size(), number);
        std::fprintf(stderr, "thread %d:\n", number);
        const int before = g_printed;
        const auto last = std::chrono::steady_clock::now() + patience;
        syscall(SYS_tgkill, getpid(), number, stack_signal);
        while (g_printed == before && std::chrono::steady_clock::now() < last) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
}

} // namespace Pelgar::ORBE::test
