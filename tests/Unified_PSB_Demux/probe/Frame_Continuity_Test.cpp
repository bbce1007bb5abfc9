#include "probe/Frame_Continuity.h"

#include <gtest/gtest.h>

namespace {

using Pelgar::ORBE::demux::Frame_Continuity;

constexpr std::uint32_t frames = 13; // of a super frame
constexpr std::uint32_t counters = 1U << 20U;

// Drops a super frame from `first` on, frame by frame; the answer to the last one, when the others are true.
bool drop(Frame_Continuity& continuity, std::uint32_t first) {
    for (std::uint32_t frame = 0; frame + 1 < frames; ++frame) {
        EXPECT_TRUE(continuity.follow_dropped((first + frame) % counters)) << frame;
    }
    return continuity.follow_dropped((first + frames - 1) % counters);
}

TEST(Frame_Continuity, SuperFramesFollowOneAnotherAcrossTheWrap) {
    Frame_Continuity continuity;
    EXPECT_TRUE(continuity.follow(0));
    EXPECT_TRUE(continuity.follow(frames));
    EXPECT_FALSE(continuity.follow(counters - 3)) << "others are missing";
    EXPECT_TRUE(continuity.follow(frames - 3));
}

TEST(Frame_Continuity, EveryDroppedSuperFrameIsHeldAgainstTheOneBefore) {
    Frame_Continuity continuity;
    EXPECT_TRUE(drop(continuity, 0));
    EXPECT_TRUE(drop(continuity, frames));
    EXPECT_FALSE(drop(continuity, 3 * frames)) << "one is missing";
    EXPECT_TRUE(drop(continuity, 4 * frames));
    EXPECT_TRUE(continuity.follow(5 * frames));
}

TEST(Frame_Continuity, DroppedFramesThatDoNotRunOnTellNothing) {
    Frame_Continuity continuity;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        EXPECT_TRUE(continuity.follow_dropped(frame == 5 ? 777 : frame)) << frame;
    }
    EXPECT_TRUE(continuity.follow(0)) << "as if they had not been";
}

TEST(Frame_Continuity, KnownLossesAreNoGap) {
    Frame_Continuity continuity;
    EXPECT_TRUE(continuity.follow(0));
    continuity.skip(2);
    EXPECT_TRUE(continuity.follow(3 * frames));
    continuity.skip(counters); // as often round
    EXPECT_TRUE(continuity.follow(4 * frames));
}

} // namespace
