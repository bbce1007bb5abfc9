// A system that has no thread left when streaming is prepared.
#include "Refused_Thread.h"

#include "Hardware_Streaming_Fixture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

namespace Pelgar::ORBE::test {

std::atomic<int> Refused_Thread::s_left{0};

} // namespace Pelgar::ORBE::test

// Stands before the one of the C library.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                              void* argument) noexcept {
    if (Pelgar::ORBE::test::Refused_Thread::is_next()) {
        return EAGAIN;
    }
    using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto next = reinterpret_cast<Create*>(dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, routine, argument);
}

namespace {

using namespace std::chrono_literals;
using namespace Pelgar::ORBE::test;

std::ptrdiff_t thread_count() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

// A thread that was joined may still be seen for a moment.
bool comes_down_to(std::ptrdiff_t count) {
    const auto patience = std::chrono::steady_clock::now() + 5s;
    while (thread_count() > count && std::chrono::steady_clock::now() < patience) {
        std::this_thread::yield();
    }
    return thread_count() == count;
}

// It brings the thread sanitizer's own with it, which stays.
void make_first_thread() {
    std::filesystem::path task;
    std::thread([&] { task = "/proc/self/task/" + std::to_string(gettid()); }).join();
    while (std::filesystem::exists(task)) {
        std::this_thread::yield();
    }
}

class Refused : public Hardware_Streaming, public testing::WithParamInterface<int> {};

TEST_P(Refused, LeavesNoOtherThreadAndTheNextPreparingSucceeds) {
    make_first_thread();
    const std::ptrdiff_t before = thread_count();
    {
        const Refused_Thread refused(GetParam());
        EXPECT_THROW(m_controller->prepare_for_streaming(), std::system_error);
    }
    EXPECT_TRUE(comes_down_to(before));
    EXPECT_NO_THROW(m_controller->prepare_for_streaming());
    EXPECT_EQ(thread_count(), before + 6);
    const Printed printed = printed_by([&] { m_controller->finalize_stream(); });
    EXPECT_EQ(occurrences(printed.out, "received poision packet"), 4U) << "they have worked until now";
}

// Five for the streams, and the demultiplexer's own.
INSTANTIATE_TEST_SUITE_P(Thread, Refused, testing::Range(1, 7));

} // namespace
