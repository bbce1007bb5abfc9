#include "Hand_Over.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using Pelgar::ORBE::recording::Hand_Over;

TEST(HandOver, GivesBatchesInOrderThroughASmallRing) {
    Hand_Over<int> hand_over(2);
    std::vector<int> received;
    std::thread consumer([&] {
        while (const int* const batch = hand_over.wait_filled()) {
            received.push_back(*batch);
            hand_over.release();
        }
    });
    std::vector<int> sent;
    for (int i = 0; i < 1000; ++i) {
        hand_over.wait_free() = i;
        hand_over.publish();
        sent.push_back(i);
    }
    hand_over.finish();
    consumer.join();
    EXPECT_EQ(received, sent);
}

TEST(HandOver, EndsAfterTheLastBatch) {
    Hand_Over<int> hand_over(4);
    hand_over.wait_free() = 7;
    hand_over.publish();
    hand_over.finish();
    const int* const batch = hand_over.wait_filled();
    ASSERT_NE(batch, nullptr);
    EXPECT_EQ(*batch, 7);
    hand_over.release();
    EXPECT_EQ(hand_over.wait_filled(), nullptr);
}

} // namespace
