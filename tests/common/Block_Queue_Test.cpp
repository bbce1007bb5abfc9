#include "common/Block_Queue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

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

TEST(BlockQueue, ExchangedRecordsKeepTheirPlaceInMemory) {
    Block_Queue<int> queue;
    auto record = std::make_unique<int>(7);
    const int* const given = record.get();
    EXPECT_EQ(queue.exchange_unbounded(record), 1U);
    ASSERT_NE(record, nullptr);
    EXPECT_NE(record.get(), given);
    EXPECT_EQ(&queue.wait_front(), given);
    EXPECT_EQ(*given, 7);
}

TEST(BlockQueue, ExchangeKeepsOrderAmongCopiesAndGivesBackNothingThatIsQueued) {
    Block_Queue<int> queue;
    auto record = std::make_unique<int>();
    int in = 0;
    int out = 0;
    for (int round = 0; round < 300; ++round) {
        for (int i = 0; i < 1 + round % 9; ++i) {
            if ((round + i) % 3 == 0) {
                queue.push_unbounded(in++);
            } else {
                *record = in++;
                queue.exchange_unbounded(record);
            }
            *record = -1;
        }
        while (queue.size() > static_cast<std::size_t>(round % 4)) {
            ASSERT_EQ(queue.wait_front(), out++);
            queue.pop();
        }
    }
}

// A producer may look back at the record it gave before the last exchange until the next one.
TEST(BlockQueue, TheRecordGivenLastIsNotTheOneThatComesBack) {
    Block_Queue<int> queue;
    auto record = std::make_unique<int>();
    for (int i = 0; i < 100; ++i) {
        *record = i;
        const int* const given = record.get();
        queue.exchange_unbounded(record);
        EXPECT_NE(record.get(), given);
        if (i % 3 != 0) {
            queue.pop();
        }
        *record = -1;
        EXPECT_EQ(*given, i);
    }
}

TEST(BlockQueue, ExchangeOrDropLeavesTheRecordWhenTheQueueIsFull) {
    Block_Queue<int> queue;
    auto record = std::make_unique<int>();
    for (int i = 0; i < 6; ++i) {
        *record = i;
        EXPECT_TRUE(queue.exchange_or_drop(record, 5));
    }
    *record = 6;
    const int* const kept = record.get();
    EXPECT_FALSE(queue.exchange_or_drop(record, 5));
    EXPECT_EQ(record.get(), kept);
    EXPECT_EQ(*record, 6);
    EXPECT_EQ(queue.size(), 6U);
}

TEST(BlockQueue, TheLastRecordCanBeAddedToUnlessItIsTheFrontOne) {
    Block_Queue<int> queue;
    const auto add_ten = [](int& record) {
        record += 10;
        return record < 30;
    };
    EXPECT_FALSE(queue.extend_back(add_ten));
    queue.push_unbounded(1);
    EXPECT_FALSE(queue.extend_back(add_ten));
    queue.push_unbounded(2);
    EXPECT_TRUE(queue.extend_back(add_ten));
    EXPECT_TRUE(queue.extend_back(add_ten));
    EXPECT_FALSE(queue.extend_back(add_ten)) << "the operation's own answer";
    EXPECT_EQ(queue.wait_front(), 1);
    queue.pop();
    EXPECT_EQ(queue.wait_front(), 32);
    EXPECT_FALSE(queue.extend_back(add_ten));
    EXPECT_EQ(queue.size(), 1U);
}

// The producer waits inside the burst for what the consumer does: it is woken although the burst goes on.
TEST(BlockQueue, InABurstAWaiterIsWokenWhenWhatItWantsIsThere) {
    Block_Queue<int> queue;
    constexpr std::size_t single = Block_Queue<int>::one_by_one;
    // Each on the queue that the ones before have used.
    for (const std::size_t wanted :
         {single, std::size_t{8}, std::size_t{1}, std::size_t{3}, single, std::size_t{1}}) {
        std::atomic<bool> woken{false};
        std::thread consumer([&] {
            EXPECT_NE(queue.wait_front_or_exit(wanted), nullptr);
            woken = true;
        });
        queue.begin_burst();
        for (std::size_t i = 0; i < std::max(wanted, std::size_t{1}); ++i) {
            queue.push_unbounded(1);
        }
        while (!woken) {
            std::this_thread::yield();
        }
        queue.end_burst();
        consumer.join();
        while (queue.size() != 0) {
            queue.pop();
        }
    }
}

// A call for several whose last record is missing is woken for that one, however many wake-ups there were
// before.
TEST(BlockQueue, InABurstTheRestOfACallIsNotWaitedForLonger) {
    Block_Queue<int> queue;
    std::atomic<int> taken{0};
    std::thread consumer([&] {
        for (std::size_t rest = 7; rest != 0; --rest) {
            EXPECT_NE(queue.wait_front_or_exit(rest), nullptr);
            queue.pop();
            ++taken;
        }
    });
    queue.begin_burst();
    for (const int records : {6, 1}) {
        const int before = taken;
        for (int i = 0; i < records; ++i) {
            queue.push_unbounded(i);
        }
        if (before + records < 7) {
            queue.end_burst();
            queue.begin_burst();
        }
        while (taken != before + records) {
            std::this_thread::yield();
        }
    }
    queue.end_burst();
    consumer.join();
}

// However the waiter goes to sleep and is woken in between.
TEST(BlockQueue, AfterTheEndOfABurstNothingIsLeftToAWaiter) {
    for (const std::size_t wanted : {0U, 1U, 5U, 100U}) {
        Block_Queue<std::size_t> queue;
        std::atomic<std::size_t> taken{0};
        std::size_t mismatches = 0;
        std::thread consumer([&] {
            while (const std::size_t* front = queue.wait_front_or_exit(wanted)) {
                mismatches += *front != taken ? 1U : 0U;
                queue.pop();
                ++taken;
            }
        });
        std::size_t pushed = 0;
        for (std::size_t round = 0; round < 300; ++round) {
            queue.begin_burst();
            for (std::size_t i = 0; i < round % 90; ++i) {
                queue.push_unbounded(pushed++);
                if (round % 3 == 0) {
                    std::this_thread::yield();
                }
            }
            queue.end_burst();
            while (taken != pushed) {
                std::this_thread::yield();
            }
        }
        queue.signal_exit();
        consumer.join();
        EXPECT_EQ(mismatches, 0U);
    }
}

TEST(BlockQueue, AtTheEndOfABurstAWaiterIsWokenForLessThanItWants) {
    Block_Queue<int> queue;
    for (int round = 0; round < 200; ++round) {
        std::thread consumer([&] {
            EXPECT_NE(queue.wait_front_or_exit(100), nullptr);
            queue.pop();
        });
        queue.begin_burst();
        queue.push_unbounded(round);
        queue.end_burst();
        consumer.join();
    }
    EXPECT_EQ(queue.size(), 0U);
}

TEST(BlockQueue, ExitWakesAWaiterInABurst) {
    Block_Queue<int> queue;
    queue.begin_burst();
    std::thread consumer([&] { EXPECT_EQ(queue.wait_front_or_exit(100), nullptr); });
    queue.signal_exit();
    consumer.join();
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
