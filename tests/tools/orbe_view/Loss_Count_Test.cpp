#include "history/Loss_Count.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace Pelgar::ORBE::view {

namespace {

void come(Loss_Count& count, std::uint64_t begin, std::uint64_t end) {
    for (std::uint64_t number = begin; number < end; ++number) {
        EXPECT_EQ(count.come(number), 0U);
    }
}

} // namespace

TEST(Loss_Count, CountsWhatIsLeftOutAndWhatItIsToldOf) {
    Loss_Count count;
    come(count, 100, 110); // where a stream begins nothing is lost
    EXPECT_EQ(count.come(115), 5U);
    count.lose(116, 4);
    come(count, 120, 130);
    EXPECT_EQ(count.passed(), 9U);
    EXPECT_EQ(count.different(), 9U);
}

TEST(Loss_Count, CountsEachLossOnceHoweverOftenAJumpLeadsThere) {
    Loss_Count count;
    come(count, 0, 100);
    count.lose(100, 10);
    come(count, 110, 200);
    count.jump();
    come(count, 90, 100);
    EXPECT_EQ(count.come(110), 10U);
    EXPECT_EQ(count.passed(), 20U);
    EXPECT_EQ(count.different(), 10U);
    // Partly beyond what was passed: before it, and behind it.
    count.jump();
    count.lose(195, 10);
    count.jump();
    EXPECT_EQ(count.different(), 15U);
    count.lose(300, 5);
    count.jump();
    come(count, 290, 300);
    count.lose(300, 5);
    EXPECT_EQ(count.different(), 20U);
    count.jump();
    come(count, 150, 160);
    EXPECT_EQ(count.come(320), 160U);
    EXPECT_EQ(count.different(), 20U + (290 - 205) + (320 - 305));
}

TEST(Loss_Count, CountsOtherSamplesWithTheSameNumbers) {
    Loss_Count count;
    come(count, 0, 10);
    count.come(20);
    count.begin_anew();
    come(count, 0, 10);
    EXPECT_EQ(count.come(20), 10U);
    EXPECT_EQ(count.different(), 20U);
}

// Against a set of every sample.
TEST(Loss_Count, IsRightForAnyJumps) {
    std::mt19937 random(7);
    Loss_Count count;
    std::set<std::uint64_t> passed;
    std::uint64_t expected = 0;
    for (int jump = 0; jump < 200; ++jump) {
        std::uint64_t number = random() % 3000;
        for (int part = 0; part < 5; ++part) {
            const std::uint64_t there = 1 + random() % 10;
            for (const std::uint64_t end = number + there; number < end; ++number) {
                count.come(number);
                passed.insert(number);
            }
            const std::uint64_t lost = random() % 20;
            count.lose(number, lost);
            for (const std::uint64_t end = number + lost; number < end; ++number) {
                expected += passed.insert(number).second ? 1U : 0U;
            }
        }
        count.jump();
        ASSERT_EQ(count.different(), expected) << jump;
    }
}

} // namespace Pelgar::ORBE::view
