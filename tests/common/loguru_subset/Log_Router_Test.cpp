#include "Log_Router.h"

#include "Callback_Sink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using loguru::Message;
using loguru::detail::Callback_Sink;
using loguru::detail::Log_Router;

std::vector<std::string> g_received;

// A listener that says its name, which it gets as user data, and the text.
void receive(void* name, const Message& message) {
    g_received.push_back(static_cast<const char*>(name) + std::string(": ") + message.message);
}

void fail(void* /*user_data*/, const Message& /*message*/) {
    throw std::runtime_error("a listener's own trouble");
}

class Router : public testing::Test {
protected:
    void add(const char* id, char* name, Callback_Sink::Handler handler = receive, int verbosity = 9) {
        m_router.add(std::make_shared<Callback_Sink>(id, handler, name, verbosity));
    }

    void deliver(const char* text, int verbosity = 0) {
        m_router.deliver({verbosity, "file.cpp", 1, "", text});
    }

    ~Router() override {
        m_router.remove_all();
        g_received.clear();
    }

    Log_Router& m_router = Log_Router::instance();
    char m_a[2] = "a";
    char m_b[2] = "b";
};

TEST_F(Router, ListenersGetARecordInTheOrderInWhichTheyWereAdded) {
    add("second name", m_a);
    add("first name", m_b);
    deliver("text");
    EXPECT_EQ(g_received, (std::vector<std::string>{"a: text", "b: text"}));
}

TEST_F(Router, ListenersGetWhatTheyListenTo) {
    add("all", m_a);
    add("errors", m_b, receive, loguru::Verbosity_ERROR);
    deliver("detail", 9);
    deliver("warning", -1);
    deliver("error", -2);
    EXPECT_EQ(g_received, (std::vector<std::string>{"a: detail", "a: warning", "a: error", "b: error"}));
}

TEST_F(Router, FirstListenerOfANameIsRemoved) {
    add("name", m_a);
    add("name", m_b);
    EXPECT_TRUE(m_router.remove("name"));
    deliver("one is left");
    EXPECT_EQ(g_received, (std::vector<std::string>{"b: one is left"}));
    EXPECT_TRUE(m_router.remove("name"));
    EXPECT_FALSE(m_router.remove("name"));
    deliver("nobody is left");
    EXPECT_EQ(g_received.size(), 1U);
}

TEST_F(Router, ListenerThatFailsKeepsNothingFromTheOthers) {
    add("fails", m_a, fail);
    add("works", m_b);
    deliver("text");
    deliver("more text");
    EXPECT_EQ(g_received, (std::vector<std::string>{"b: text", "b: more text"}));
}

TEST_F(Router, WhatAListenerLogsIsDropped) {
    add("logs", m_a, [](void* name, const Message& message) {
        Log_Router::instance().deliver({0, "file.cpp", 1, "", "an echo"});
        receive(name, message);
    });
    deliver("text");
    EXPECT_EQ(g_received, (std::vector<std::string>{"a: text"}));
}

TEST_F(Router, ListenerMayRemoveItselfAndAddOthers) {
    add("once", m_a, [](void* name, const Message& message) {
        receive(name, message);
        Log_Router::instance().remove("once");
        static char added[] = "added";
        Log_Router::instance().add(std::make_shared<Callback_Sink>("added", receive, added, 9));
    });
    deliver("one");
    deliver("two");
    ASSERT_GE(g_received.size(), 2U);
    EXPECT_EQ(g_received.front(), "a: one");
    EXPECT_EQ(g_received.back(), "added: two");
}

TEST_F(Router, RecordsOfManyThreadsArriveWholeAndOneAtATime) {
    // The listener's vector has no lock of its own.
    add("all", m_a);
    constexpr int thread_count = 4;
    constexpr int record_count = 200;
    std::vector<std::thread> threads;
    for (int i = 0; i < thread_count; ++i) {
        threads.emplace_back([this] {
            for (int record = 0; record < record_count; ++record) {
                deliver("text");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(g_received, std::vector<std::string>(thread_count * record_count, "a: text"));
}

TEST_F(Router, ListenersComeAndGoWhileOthersLog) {
    std::thread logging([this] {
        for (int record = 0; record < 500; ++record) {
            deliver("text");
        }
    });
    for (int i = 0; i < 100; ++i) {
        add("passing", m_a);
        EXPECT_TRUE(m_router.remove("passing"));
    }
    logging.join();
    const std::size_t received = g_received.size();
    deliver("nobody listens");
    EXPECT_EQ(g_received.size(), received);
}

#if defined(__linux__)
TEST_F(Router, ProcessThatIsForkedWhileAThreadLogsCanLogItself) {
    static std::atomic<unsigned> received;
    add("one", m_a, [](void* /*user_data*/, const Message& /*message*/) { ++received; });
    std::atomic<bool> enough{false};
    std::thread logging([&] {
        while (!enough) {
            deliver("text");
        }
    });
    constexpr int forks = 100;
    constexpr unsigned patience_s = 20;
    for (int i = 0; i < forks; ++i) {
        const pid_t child = fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            alarm(patience_s); // ends a process that hangs
            const unsigned before = received;
            deliver("text");
            _exit(received == before + 1 ? 0 : 1);
        }
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        if (status != 0) {
            ADD_FAILURE() << "the forked process ended with status " << status;
            break;
        }
    }
    enough = true;
    logging.join();
}
#endif

} // namespace
