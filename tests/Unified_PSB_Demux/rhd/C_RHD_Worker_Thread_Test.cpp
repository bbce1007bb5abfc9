#include "rhd/C_RHD_Worker_Thread.h"

#include "rhd/RHD_Frame_Null_listener.h"

#include "Captured_Output.h"
#include "Demux_Streams.h"
#include "Log_Capture.h"
#include "Recording_Listeners.h"

#include <gtest/gtest.h>

#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Pelgar::ORBE::demux;
using namespace Pelgar::ORBE::test;
using Lines = std::vector<std::string>;

class C_RHD_Worker_Thread_Test : public testing::Test {
protected:
    C_RHD_Worker_Thread_Test() { m_worker.set_listener(m_listener); }

    void push_frames(std::uint32_t first, std::uint32_t count, std::size_t streams = 0) {
        for (std::uint32_t seed = first; seed < first + count; ++seed) {
            m_worker.push_row_words(rhd_words(numbered_rhd_frame(seed, streams), streams));
        }
    }

    void stop_after_frame(std::size_t last) {
        m_listener->on_frame = [this, last](std::size_t count) {
            if (count == last) {
                m_worker.signal_to_stop();
            }
        };
    }

    Captured_Output run() {
        return captured_output([&] {
            m_worker.start("RHD");
            m_worker.join();
        });
    }

    C_RHD_Worker_Thread m_worker;
    std::shared_ptr<Recording_Rhd_Listener> m_listener = std::make_shared<Recording_Rhd_Listener>();
};

TEST_F(C_RHD_Worker_Thread_Test, WakeUpWordsAre1120RowsOfSeven) {
    push_frames(1, 1);
    m_listener->on_frame = [this](std::size_t) {
        m_worker.signal_to_stop();
        m_worker.push_wake_up_words();
    };
    EXPECT_EQ(run().out, "RHD worker, processed valid frames : 1, queue element count : 7840\n");
}

TEST_F(C_RHD_Worker_Thread_Test, DeliversEveryFrameInOrder) {
    m_worker.set_enabled_stream_count(3);
    push_frames(1, 20, 3);
    stop_after_frame(20);
    const auto output = run();
    EXPECT_EQ(output.err, "");
    const auto frames = m_listener->frames();
    ASSERT_EQ(frames.size(), 20U);
    for (std::uint32_t i = 0; i < 20; ++i) {
        EXPECT_EQ(frames[i], numbered_rhd_frame(1 + i, 3));
    }
    EXPECT_EQ(m_worker.get_valid_frame_count(), 20U);
}

TEST_F(C_RHD_Worker_Thread_Test, LogsItsStartAndEnd) {
    const Log_Capture log;
    push_frames(1, 1);
    stop_after_frame(1);
    run();
    EXPECT_EQ(log.texts(), (Lines{"Starting RHD worker thread : RHD", "RHD Worker thread started",
                                  "RHD Worker thread end"}));
    EXPECT_EQ(log.count(0, "Starting RHD worker thread : RHD"), 1);
    EXPECT_EQ(log.count(0, "RHD Worker thread started"), 1);
    EXPECT_EQ(log.count(0, "RHD Worker thread end"), 1);
    EXPECT_TRUE(log.has_scope(0, "signal_to_stop"));
    for (const auto& line : log.lines()) {
        EXPECT_EQ(line.file, "C_RHD_Worker_Thread.cpp") << line.text;
    }
}

TEST_F(C_RHD_Worker_Thread_Test, FirstIterationPrintsTheCountsOfFramesAndOfAllUnreadWords) {
    push_frames(1, 2000);
    stop_after_frame(1);
    EXPECT_EQ(run().out, "RHD worker, processed valid frames : 1, queue element count : 39980\n");
}

TEST_F(C_RHD_Worker_Thread_Test, AnInvalidFirstFrameCountsAsAnIterationButNotAsAFrame) {
    m_worker.push_row_words(Words{0x2A53, 0, 0, 0});
    push_frames(1, 1);
    stop_after_frame(1);
    const auto output = run();
    EXPECT_EQ(output.out, "RHD worker, processed valid frames : 0, queue element count : 20\n");
    EXPECT_EQ(output.err, "invalid RHD frame preamble \n");
    EXPECT_EQ(m_worker.get_valid_frame_count(), 1U);
}

TEST_F(C_RHD_Worker_Thread_Test, CountsArePrintedAgainAfter65536Iterations) {
    struct Counting_Listener : I_RHD_Frame_Listener {
        explicit Counting_Listener(C_RHD_Worker_Thread& stopped) : worker(stopped) {}

        void publish_rhd_frame(RHD_Frame&) override {
            if (++count == 65'538) {
                worker.signal_to_stop();
            }
        }

        C_RHD_Worker_Thread& worker;
        int count = 0;
    };

    const auto listener = std::make_shared<Counting_Listener>(m_worker);
    m_worker.set_listener(listener);
    push_frames(1, 65'538);
    EXPECT_EQ(run().out, "RHD worker, processed valid frames : 1, queue element count : 1310740\n"
                         "RHD worker, processed valid frames : 65537, queue element count : 20\n");
}

TEST_F(C_RHD_Worker_Thread_Test, AFrameThatIsDroppedHalfReadLeavesNoTrace) {
    // Cut in the preamble, behind it, in the time stamp, in the amplifier words, in front of and in the rest.
    for (const std::size_t cut : {0U, 1U, 3U, 4U, 5U, 6U, 50U, 76U, 78U, 80U, 91U}) {
        C_RHD_Worker_Thread worker;
        const auto listener = std::make_shared<Recording_Rhd_Listener>();
        worker.set_listener(listener);
        worker.set_enabled_stream_count(2);
        const auto output = captured_output([&] {
            worker.start("RHD");
            const Words half = rhd_words(numbered_rhd_frame(1, 2), 2);
            worker.push_row_words(std::span(half).first(cut));
            worker.wait_until_delivered();
            worker.drop_unfinished_frame();
            for (const std::uint32_t seed : {2U, 3U}) {
                worker.push_row_words(rhd_words(numbered_rhd_frame(seed, 2), 2));
                worker.wait_until_delivered();
                EXPECT_EQ(listener->frames().size(), seed - 1) << cut;
            }
            worker.signal_to_stop();
            worker.push_wake_up_words();
            worker.join();
        });
        EXPECT_EQ(listener->frames()[0], numbered_rhd_frame(2, 2)) << cut;
        EXPECT_EQ(listener->frames()[1], numbered_rhd_frame(3, 2)) << cut;
        EXPECT_EQ(worker.get_valid_frame_count(), 2U);
        EXPECT_EQ(output.out.find("RHD worker, processed valid frames : 1, queue element count : 0\n"), 0U);
        // The stop ends the search for the next frame.
        EXPECT_EQ(output.err, "Resync warning 1\ninvalid RHD frame preamble \n") << cut;
    }
}

TEST_F(C_RHD_Worker_Thread_Test, WithoutAListenerEveryFramePrintsItsLine) {
    m_listener.reset();
    push_frames(1, 3);
    const auto output = captured_output([&] {
        m_worker.start("RHD");
        while (m_worker.get_valid_frame_count() < 3) {
            std::this_thread::yield();
        }
        m_worker.signal_to_stop();
        m_worker.push_wake_up_words();
        m_worker.join();
    });
    std::size_t count = 0;
    const std::string line = "There is no RHD frame listener\n";
    for (auto at = output.out.find(line); at != std::string::npos; at = output.out.find(line, at + 1)) {
        ++count;
    }
    EXPECT_EQ(count, 3U);
}

TEST_F(C_RHD_Worker_Thread_Test, FramesThatAreQueuedBehindTheStopAreDropped) {
    push_frames(1, 10);
    stop_after_frame(4);
    run();
    EXPECT_EQ(m_listener->frames().size(), 4U);
}

TEST_F(C_RHD_Worker_Thread_Test, AThreadThatIsStartedAfterTheStopEndsAtOnce) {
    m_worker.signal_to_stop();
    push_frames(1, 1);
    const Log_Capture log;
    EXPECT_EQ(run().out, "");
    EXPECT_EQ(log.texts(), (Lines{"Starting RHD worker thread : RHD", "RHD Worker thread started",
                                  "RHD Worker thread end"}));
    EXPECT_TRUE(m_listener->frames().empty());
}

TEST_F(C_RHD_Worker_Thread_Test, ListenerIsHeldWeaklyAndReadBack) {
    EXPECT_EQ(m_worker.get_listener().lock(), m_listener);
    EXPECT_EQ(m_listener.use_count(), 1);
}

// Whatever the thread waits for, it ends: nothing, the rest of a preamble, a frame of any size, garbage.
TEST_F(C_RHD_Worker_Thread_Test, StopAndWakeUpWordsEndTheThreadInEveryStateOfTheStream) {
    const Log_Capture log;
    const Words frame = rhd_words(numbered_rhd_frame(1, 4), 4);
    int threads = 0;
    for (const std::uint32_t streams : {0U, 4U, 32U, 223U, 224U, 100'000U, 0xFFFFFFFFU}) {
        for (const std::size_t words : {0U, 1U, 3U, 4U, 6U, 20U, 160U}) {
            for (const bool garbage_in_front : {false, true}) {
                captured_output([&] {
                    C_RHD_Worker_Thread worker;
                    worker.set_listener(std::weak_ptr<I_RHD_Frame_Listener>(m_listener));
                    worker.set_enabled_stream_count(streams);
                    worker.start("RHD");
                    if (garbage_in_front) {
                        worker.push_row_words(Words{9, 9, 9});
                    }
                    worker.push_row_words(std::span(frame).first(words));
                    worker.signal_to_stop();
                    worker.push_wake_up_words();
                    worker.join();
                });
                ASSERT_EQ(log.count("RHD Worker thread end"), ++threads);
            }
        }
    }
}

TEST_F(C_RHD_Worker_Thread_Test, DestructorEndsARunningThread) {
    const Log_Capture log;
    captured_output([&] {
        C_RHD_Worker_Thread worker;
        worker.start("RHD");
    });
    EXPECT_EQ(log.count("RHD Worker thread end"), 1);
}

class Throwing_Rhd_Listener : public Recording_Rhd_Listener {
public:
    void publish_rhd_frame(RHD_Frame& frame) override {
        Recording_Rhd_Listener::publish_rhd_frame(frame);
        if (frames().size() == 1) {
            throw std::runtime_error("no room, 100% used");
        }
        if (frames().size() == 2) {
            throw 42;
        }
    }
};

TEST_F(C_RHD_Worker_Thread_Test, AnExceptionIsLoggedAndTheNextFrameDelivered) {
    m_listener = std::make_shared<Throwing_Rhd_Listener>();
    m_worker.set_listener(m_listener);
    push_frames(1, 3);
    stop_after_frame(3);
    const Log_Capture log;
    run();
    EXPECT_EQ(log.count(-2, "RHD worker RHD : no room, 100% used"), 1);
    EXPECT_EQ(log.count(-2, "RHD worker RHD : unknown exception"), 1);
    EXPECT_EQ(m_listener->frames().size(), 3U);
}

} // namespace
