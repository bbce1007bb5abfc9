#include "decoding/Stream_Drain.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace {

using Pelgar::ORBE::recorder::Stream_Drain;

// A queue that is only counted.
struct Counted_Queue {
    std::atomic<std::size_t> waiting{0};
    std::atomic<std::size_t> written{0};

    Stream_Drain::Stream stream() {
        return {[this] { return waiting.load(); },
                [this](std::size_t most) {
                    const std::size_t taken = std::min(most, waiting.load());
                    waiting -= taken;
                    return taken;
                },
                [this](std::size_t taken) { written += taken; }};
    }
};

TEST(Stream_Drain, WritesWhatWasThereBeforeTheLastPiece) {
    Counted_Queue queue;
    Stream_Drain drain(queue.stream());
    queue.waiting += 1'000;
    drain.move_on();
    drain.wait_until_left(0);
    EXPECT_EQ(queue.written, 0U);
    queue.waiting += 500;
    drain.move_on();
    drain.wait_until_left(0);
    EXPECT_EQ(queue.written, 1'000U);
    drain.let_all_through();
    drain.wait_until_left(0);
    EXPECT_EQ(queue.written, 1'500U);
    EXPECT_EQ(queue.waiting, 0U);
}

TEST(Stream_Drain, TellsWhatStoppedTheWriting) {
    Counted_Queue queue;
    Stream_Drain::Stream stream = queue.stream();
    stream.write = [](std::size_t) { throw std::runtime_error("the disk is full"); };
    Stream_Drain drain(stream);
    queue.waiting += 10;
    drain.let_all_through();
    EXPECT_THROW(drain.wait_until_left(0), std::runtime_error);
    EXPECT_THROW(drain.move_on(), std::runtime_error);
}

TEST(Stream_Drain, EndsWithPacketsLeft) {
    Counted_Queue queue;
    Stream_Drain drain(queue.stream());
    queue.waiting += 10;
    drain.move_on();
    EXPECT_EQ(queue.written, 0U);
}

} // namespace
