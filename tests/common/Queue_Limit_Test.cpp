#include "common/Queue_Limit.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>

namespace {

using Pelgar::ORBE::Queue_Limit;

TEST(Queue_Limit, AdmitsUpToTheLimit) {
    Queue_Limit limit(4);
    for (std::size_t queued = 0; queued < 4; ++queued) {
        EXPECT_TRUE(limit.admits(queued));
    }
    EXPECT_FALSE(limit.admits(4));
}

TEST(Queue_Limit, AQueueThatWasFullIsClosedUntilItIsHalfEmpty) {
    Queue_Limit limit(4);
    EXPECT_FALSE(limit.admits(4));
    EXPECT_FALSE(limit.admits(3));
    EXPECT_FALSE(limit.admits(2));
    EXPECT_TRUE(limit.admits(1));
    EXPECT_TRUE(limit.admits(2));
    EXPECT_TRUE(limit.admits(3));
    EXPECT_FALSE(limit.admits(4));
}

TEST(Queue_Limit, TheLargestOneIsNone) {
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    Queue_Limit limit(most);
    EXPECT_TRUE(limit.admits(most - 1));
}

} // namespace
