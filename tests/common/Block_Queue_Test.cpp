#include "common/Block_Queue.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <numeric>
#include <span>
#include <thread>
#include <vector>

namespace {

using Pelgar::ORBE::Block_Queue;

TEST(BlockQueue, KeepsOrderAndCounts) {
    Block_Queue<int> queue;
    EXPECT_EQ(queue.push_unbounded(7), 1U);
    EXPECT_EQ(queue.push_unbounded(8), 2U);
    EXPECT_EQ(queue.wait_front(), 7);
    queue.pop();
    EXPECT_EQ(queue.size(), 1U);
    EXPECT_EQ(queue.wait_front(), 8);
    queue.pop();
    EXPECT_EQ(queue.size(), 0U);
}

TEST(BlockQueue, PopOfAnEmptyQueueDoesNothing) {
    Block_Queue<int> queue;
    queue.pop();
    EXPECT_EQ(queue.size(), 0U);
    queue.push_unbounded(1);
    EXPECT_EQ(queue.wait_front(), 1);
}

TEST(BlockQueue, FrontStaysWhereItIsWhileTheQueueGrows) {
    Block_Queue<int> queue;
    queue.push_unbounded(-1);
    queue.push_unbounded(-2);
    queue.pop();
    const int* front = &queue.wait_front();
    for (int i = 0; i < 1000; ++i) {
        queue.push_unbounded(i);
    }
    EXPECT_EQ(&queue.wait_front(), front);
    EXPECT_EQ(*front, -2);
}

TEST(BlockQueue, BlocksAreReusedOnceTheQueueWasEmpty) {
    Block_Queue<int> queue;
    queue.push_unbounded(1);
    const int* first = &queue.wait_front();
    queue.pop();
    queue.push_unbounded(2);
    EXPECT_EQ(&queue.wait_front(), first);
}

TEST(BlockQueue, WrapsAroundInEveryPosition) {
    Block_Queue<int> queue;
    int in = 0;
    int out = 0;
    for (int round = 0; round < 200; ++round) {
        for (int i = 0; i < 1 + round % 7; ++i) {
            queue.push_unbounded(in++);
        }
        while (queue.size() > static_cast<std::size_t>(round % 5)) {
            ASSERT_EQ(queue.wait_front(), out++);
            queue.pop();
        }
    }
}

TEST(BlockQueue, PushOrDropHoldsOneMoreThanTheLimit) {
    Block_Queue<int> queue;
    for (int i = 0; i < 6; ++i) {
        EXPECT_TRUE(queue.push_or_drop(i, 5));
    }
    EXPECT_FALSE(queue.push_or_drop(6, 5));
    EXPECT_EQ(queue.size(), 6U);
    queue.pop();
    EXPECT_TRUE(queue.push_or_drop(7, 5));
}

TEST(BlockQueue, RunsOfElementsComeOutInOrderWhateverTheirLengths) {
    Block_Queue<std::uint16_t, 8> queue;
    std::uint16_t in = 0;
    std::uint16_t out = 0;
    for (std::size_t round = 0; round < 500; ++round) {
        std::vector<std::uint16_t> run(round % 23);
        std::iota(run.begin(), run.end(), in);
        in = static_cast<std::uint16_t>(in + run.size());
        const std::size_t before = queue.size();
        ASSERT_EQ(queue.push_unbounded(std::span<const std::uint16_t>(run)), before + run.size());
        std::vector<std::uint16_t> taken(round % 19);
        if (!taken.empty() && queue.size() != 0) {
            const std::size_t available = queue.size();
            const std::size_t count = queue.wait_take(taken);
            ASSERT_EQ(count, std::min(available, taken.size()));
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(taken[i], out++);
            }
        }
    }
}

TEST(BlockQueue, WaitTakeBlocksUntilThereIsSomething) {
    Block_Queue<std::uint16_t, 8> queue;
    std::array<std::uint16_t, 4> taken{};
    std::size_t count = 0;
    std::thread consumer([&] { count = queue.wait_take(taken); });
    queue.push_unbounded(std::uint16_t{42});
    consumer.join();
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(taken[0], 42);
}

TEST(BlockQueue, SignalExitWakesABlockedReader) {
    Block_Queue<int> queue;
    int value = 0;
    int* front = &value;
    std::thread reader([&] { front = queue.wait_front_or_exit(); });
    queue.signal_exit();
    reader.join();
    EXPECT_EQ(front, nullptr);
    EXPECT_TRUE(queue.signalled_for_exit());
}

TEST(BlockQueue, SignalExitWakesOneReaderACall) {
    Block_Queue<int> queue;
    std::array<std::thread, 3> readers;
    for (std::thread& reader : readers) {
        reader = std::thread([&] { EXPECT_EQ(queue.wait_front_or_exit(), nullptr); });
    }
    for (std::size_t i = 0; i < readers.size(); ++i) {
        queue.signal_exit();
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
}

TEST(BlockQueue, ExitHidesWhatIsStillQueued) {
    Block_Queue<int> queue;
    queue.push_unbounded(1);
    EXPECT_NE(queue.wait_front_or_exit(), nullptr);
    queue.signal_exit();
    EXPECT_EQ(queue.wait_front_or_exit(), nullptr);
    EXPECT_EQ(queue.size(), 1U);
}

TEST(BlockQueue, CarriesEverythingFromAProducerToAConsumerThread) {
    Block_Queue<int> queue;
    constexpr int count = 200'000;
    std::thread producer([&] {
        for (int i = 0; i < count; ++i) {
            queue.push_unbounded(i);
        }
    });
    int mismatches = 0;
    for (int i = 0; i < count; ++i) {
        mismatches += queue.wait_front() != i ? 1 : 0;
        queue.pop();
    }
    producer.join();
    EXPECT_EQ(mismatches, 0);
}

TEST(BlockQueue, WaitForConsumptionOfNothingReturnsAtOnce) {
    Block_Queue<int> queue;
    queue.wait_until_consumed();
    queue.push_unbounded(1);
    queue.pop();
    queue.wait_until_consumed();
    EXPECT_EQ(queue.size(), 0U);
}

TEST(BlockQueue, WaitForConsumptionReturnsWhenWhatWasPushedIsRemoved) {
    Block_Queue<int> queue;
    constexpr int count = 1000;
    std::atomic<int> sum{0};
    std::thread consumer([&] {
        for (int i = 0; i < count; ++i) {
            sum += queue.wait_front();
            queue.pop();
        }
    });
    for (int i = 1; i <= count; ++i) {
        queue.push_unbounded(i);
        if (i % 100 == 0) {
            queue.wait_until_consumed();
            EXPECT_EQ(sum, i * (i + 1) / 2);
        }
    }
    consumer.join();
}

TEST(BlockQueue, WaitForConsumptionDoesNotWaitForWhatIsPushedLater) {
    Block_Queue<int> queue;
    queue.push_unbounded(1);
    std::atomic<bool> done{false};
    std::thread consumer([&] {
        // Never empty again until the wait is over.
        for (int next = 2; !done; ++next) {
            queue.push_unbounded(next);
            queue.pop();
        }
    });
    queue.wait_until_consumed();
    done = true;
    consumer.join();
    EXPECT_EQ(queue.size(), 1U);
}

} // namespace
