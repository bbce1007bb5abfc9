// The pump thread's priority, where the system grants it and where it refuses.
#include "adapter/Thread_Priority.h"

#include "API_Fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include "Unprivileged_User.h"

#include <cerrno>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace {

using namespace Neuropixels;
using namespace Pelgar::ORBE::npoe_adapter;
using Pelgar::ORBE::test::API_Fixture;
using Lines = std::vector<std::string>;

constexpr const char* raised_line = "ThreadPriority of main pump increased to THREAD_PRIORITY_ABOVE_NORMAL";

#if defined(_WIN32)

constexpr int above_normal = THREAD_PRIORITY_ABOVE_NORMAL;

int own_priority() {
    return GetThreadPriority(GetCurrentThread());
}

// The system's error code when it refuses to raise a thread of this process, 0 when it does not.
int refusal() {
    return 0;
}

#else

constexpr int above_normal = -5;

id_t own_thread() {
    return static_cast<id_t>(syscall(SYS_gettid));
}

int own_priority() {
    return getpriority(PRIO_PROCESS, own_thread());
}

// The system's error code when it refuses to raise a thread of this process, 0 when it does not.
int refusal() {
    int error = 0;
    std::thread([&] {
        error = setpriority(PRIO_PROCESS, own_thread(), above_normal) == 0 ? 0 : errno;
    }).join();
    return error;
}

#endif

class Thread_Priority : public API_Fixture {
protected:
    // What the outcome is logged as, given what the system grants this process.
    static std::string expected_line() {
        const int error = refusal();
        return error == 0 ? raised_line : "SetThreadPriority failed : " + std::to_string(error);
    }

    void run_pump_until_logged(const std::string& text) const {
        EXPECT_EQ(start_acquisition(0, 1), SUCCESS);
        wait_for_log(text);
        EXPECT_EQ(stop_acquisition(0, 1), SUCCESS);
    }
};

TEST_F(Thread_Priority, RaisesTheCallingThreadAlone) {
    const bool granted = refusal() == 0;
    const std::string line = expected_line();
    const int before = own_priority();
    std::thread([&] {
        raise_own_thread_priority();
        EXPECT_EQ(own_priority(), granted ? above_normal : before);
    }).join();
    EXPECT_EQ(own_priority(), before);
    EXPECT_EQ(m_log.texts(), Lines{line});
    EXPECT_EQ(m_log.count(1, line), 1);
}

// Whatever the system grants the process that tests.
TEST_F(Thread_Priority, BothAnswersOfTheSystemAreLogged) {
    raise_own_thread_priority([] { return 0; });
    EXPECT_EQ(m_log.texts(), Lines{raised_line});
    EXPECT_EQ(m_log.count(1, raised_line), 1);
    m_log.clear();
    raise_own_thread_priority([] { return 42; });
    EXPECT_EQ(m_log.texts(), Lines{"SetThreadPriority failed : 42"});
    EXPECT_EQ(m_log.count(1, "SetThreadPriority failed : 42"), 1);
}

TEST_F(Thread_Priority, PumpThreadAsksForMore) {
    const std::string line = expected_line();
    open_simulation();
    run_pump_until_logged(line);
    EXPECT_EQ(m_log.count(1, line), 1);
    EXPECT_EQ(m_log.count("End of main pump thread (0,1)"), 1);
}

#if !defined(_WIN32)

constexpr const char* refused_line = "SetThreadPriority failed : 13"; // EACCES

class Refused_Thread_Priority : public Thread_Priority {};

TEST_F(Refused_Thread_Priority, IsLoggedAndLeavesTheThreadAsItIs) {
    const Pelgar::ORBE::test::Unprivileged_User user(RLIMIT_NICE);
    const int before = own_priority();
    raise_own_thread_priority();
    EXPECT_EQ(own_priority(), before);
    EXPECT_EQ(m_log.texts(), Lines{refused_line});
    EXPECT_EQ(m_log.count(1, refused_line), 1);
}

TEST_F(Refused_Thread_Priority, PumpRunsAllTheSame) {
    open_simulation();
    const Pelgar::ORBE::test::Unprivileged_User user(RLIMIT_NICE);
    run_pump_until_logged(refused_line);
    EXPECT_EQ(m_log.count(1, refused_line), 1);
    EXPECT_EQ(m_log.count("End of main pump thread (0,1)"), 1);
    EXPECT_TRUE(g_pump_ended);
}

#endif

} // namespace
