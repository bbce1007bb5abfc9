// The list of bits that the other tests compare with has the lengths and the fixed points of the chains.
#include "Expected_Chains.h"

#include <gtest/gtest.h>

namespace Pelgar::ORBE::test {
namespace {

using Place = std::pair<std::string, std::size_t>;

TEST(Expected_Chains, Lengths) {
    EXPECT_EQ(shank_bit_names().size(), 968U);
    EXPECT_EQ(base_bit_names(0).size(), 2448U);
    EXPECT_EQ(base_bit_names(1).size(), 2448U);
    const Expected_Chains expected;
    EXPECT_EQ(expected.chains().shank, Chain_Bytes(121));
    EXPECT_EQ(expected.chains().base_even, Chain_Bytes(306));
    EXPECT_EQ(expected.chains().base_odd, Chain_Bytes(306));
}

TEST(Expected_Chains, Fixed_Points_Of_The_Shank_Chain) {
    const Expected_Chains expected;
    EXPECT_EQ(expected.place("external 2"), Place("shank", 2));
    EXPECT_EQ(expected.place("electrode 959"), Place("shank", 3));
    EXPECT_EQ(expected.place("electrode 1"), Place("shank", 482));
    EXPECT_EQ(expected.place("tip 1"), Place("shank", 483));
    EXPECT_EQ(expected.place("tip 2"), Place("shank", 484));
    EXPECT_EQ(expected.place("electrode 0"), Place("shank", 485));
    EXPECT_EQ(expected.place("electrode 958"), Place("shank", 964));
    EXPECT_EQ(expected.place("external 1"), Place("shank", 965));
}

TEST(Expected_Chains, Fixed_Points_Of_The_Base_Chains) {
    const Expected_Chains expected;
    EXPECT_EQ(expected.place("reference 0 of 382"), Place("even", 0));
    EXPECT_EQ(expected.place("reference 2 of 383"), Place("odd", 2));
    EXPECT_EQ(expected.place("reference 0 of 0"), Place("even", 573));
    EXPECT_EQ(expected.place("reference 2 of 1"), Place("odd", 575));
    EXPECT_EQ(expected.place("AP gain 0.0"), Place("even", 72 * 8));
    EXPECT_EQ(expected.place("LFP gain 3.0"), Place("odd", 73 * 8 + 3));
    EXPECT_EQ(expected.place("standby 382"), Place("even", 263 * 8 + 6));
    EXPECT_EQ(expected.place("AP filter 383"), Place("odd", 2111));
    EXPECT_EQ(expected.place("CompP 5.0"), Place("odd", 2364));
    EXPECT_EQ(expected.place("CompN 5.0"), Place("odd", 2369));
    EXPECT_EQ(expected.place("Slope 5.0"), Place("odd", 2384));
    EXPECT_EQ(expected.place("Fine 5.0"), Place("odd", 2387));
    EXPECT_EQ(expected.place("Coarse 5.0"), Place("odd", 2389));
    EXPECT_EQ(expected.place("Cfix 5.3"), Place("odd", 2394));
    EXPECT_EQ(expected.place("CompP 28.0"), Place("even", 2112));
    EXPECT_EQ(expected.place("Cfix 2.3"), Place("even", 2447));
}

} // namespace
} // namespace Pelgar::ORBE::test
