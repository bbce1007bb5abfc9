#include "raw_capture/Capture_Queue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <numeric>
#include <thread>
#include <vector>

namespace {

using Pelgar::ORBE::Capture_Queue;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t everything = 1000;

Bytes counted(std::size_t size, std::uint8_t first = 0) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

// The bytes up to the end of the run or of all, whichever comes first.
Bytes drain(Capture_Queue& queue, std::size_t most = everything) {
    Bytes all;
    while (true) {
        const auto front = queue.wait_front(most);
        all.insert(all.end(), front.bytes.begin(), front.bytes.end());
        queue.pop(front);
        if (front.bytes.empty()) {
            return all;
        }
    }
}

TEST(Capture_Queue, BytesComeOutInOrderAcrossTheEndOfTheMemory) {
    Capture_Queue queue(100);
    queue.push(counted(60));
    const auto front = queue.wait_front(50);
    ASSERT_EQ(front.bytes.size(), 50U);
    queue.pop(front);
    queue.push(counted(80, 60));
    queue.end_run();
    Bytes expected = counted(140);
    expected.erase(expected.begin(), expected.begin() + 50);
    EXPECT_EQ(drain(queue), expected);
    EXPECT_EQ(queue.lost().bytes, 0U);
    EXPECT_TRUE(queue.is_empty());
}

TEST(Capture_Queue, WhatHasNoRoomIsLostWholeUntilAnEighthIsFree) {
    Capture_Queue queue(160);
    queue.push(counted(150));
    queue.push(counted(11, 200));
    queue.push(counted(5, 220)); // would fit
    EXPECT_EQ(queue.lost().bytes, 16U);
    EXPECT_EQ(queue.lost().places, 1U);
    EXPECT_DOUBLE_EQ(queue.fill(), 150.0 / 160.0);
    queue.pop(queue.wait_front(9));
    queue.push(counted(5, 230)); // 19 free
    queue.pop(queue.wait_front(1));
    queue.push(counted(5, 240)); // 20 free
    EXPECT_EQ(queue.lost().bytes, 21U);
    EXPECT_EQ(queue.lost().places, 1U);
    queue.end_run();
    Bytes expected = counted(150);
    expected.erase(expected.begin(), expected.begin() + 10);
    const Bytes later = counted(5, 240);
    expected.insert(expected.end(), later.begin(), later.end());
    EXPECT_EQ(drain(queue), expected);
}

TEST(Capture_Queue, EveryRunEndsWithItsOwnLosses) {
    Capture_Queue queue(40);
    queue.push(counted(40));
    queue.push(counted(7));
    queue.end_run();
    EXPECT_EQ(queue.wait_front(everything).bytes.size(), 40U);
    queue.pop(queue.wait_front(everything));
    const auto end = queue.wait_front(everything);
    EXPECT_TRUE(end.ends_run);
    EXPECT_EQ(end.lost.bytes, 7U);
    EXPECT_EQ(end.lost.places, 1U);
    EXPECT_FALSE(queue.is_empty());
    queue.pop(end);
    EXPECT_TRUE(queue.is_empty());
    queue.push(counted(3));
    queue.end_run();
    EXPECT_EQ(drain(queue), counted(3));
    EXPECT_EQ(queue.lost().bytes, 7U) << "since construction";
}

TEST(Capture_Queue, TakenBytesStopAtTheEndOfARun) {
    Capture_Queue queue(100);
    queue.push(counted(10));
    queue.end_run();
    queue.push(counted(20, 50));
    queue.end_run();
    EXPECT_EQ(drain(queue), counted(10));
    EXPECT_EQ(drain(queue), counted(20, 50));
}

TEST(Capture_Queue, ClosedQueueGivesWhatItHasAndLosesWhatComes) {
    Capture_Queue queue(100);
    queue.push(counted(10));
    queue.close();
    queue.push(counted(10));
    EXPECT_EQ(queue.lost().bytes, 10U);
    EXPECT_EQ(drain(queue), counted(10));
    const auto end = queue.wait_front(everything);
    EXPECT_TRUE(end.bytes.empty());
    EXPECT_FALSE(end.ends_run);
}

TEST(Capture_Queue, TwoThreadsExchangeEveryByte) {
    constexpr int pushes = 20'000;
    Capture_Queue queue(1 << 16);
    std::uint64_t taken = 0;
    bool in_order = true;
    std::thread consumer([&] {
        while (true) {
            const auto front = queue.wait_front(4096);
            if (front.bytes.empty()) {
                queue.pop(front);
                return;
            }
            for (const std::uint8_t byte : front.bytes) {
                in_order = in_order && byte == static_cast<std::uint8_t>(taken++);
            }
            queue.pop(front);
        }
    });
    std::uint64_t pushed = 0;
    for (int i = 0; i < pushes; ++i) {
        const Bytes bytes = counted(1 + static_cast<std::size_t>(i) % 200, static_cast<std::uint8_t>(pushed));
        while (queue.fill() > 0.9) {
            std::this_thread::yield();
        }
        queue.push(bytes);
        pushed += bytes.size();
    }
    queue.end_run();
    consumer.join();
    EXPECT_TRUE(in_order);
    EXPECT_EQ(taken, pushed);
    EXPECT_EQ(queue.lost().bytes, 0U);
}

// However far the bytes have come: they come out, or are lost, and nothing stays behind.
TEST(Capture_Queue, NothingStaysInAQueueThatIsClosedWhileBytesArePushed) {
    const Bytes bytes(std::size_t{8} << 20U); // so many that copying them takes a while
    for (int i = 0; i < 50; ++i) {
        Capture_Queue queue(bytes.size());
        std::size_t taken = 0;
        std::thread consumer([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(i * 50));
            queue.close();
            taken = drain(queue, bytes.size()).size();
        });
        queue.push(bytes);
        consumer.join();
        ASSERT_TRUE(queue.is_empty()) << i;
        ASSERT_EQ(taken + queue.lost().bytes, bytes.size()) << i;
    }
}

} // namespace
