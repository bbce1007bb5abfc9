#include "faults/Fault.h"
#include "faults/Fault_Plan.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE::recording;

std::string refusal(const std::string& text) {
    try {
        parse_fault(text);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "accepted";
}

TEST(Fault, ReadsEveryKind) {
    EXPECT_EQ(parse_fault("lost-row@0").kind, Fault_Kind::lost_row);
    EXPECT_EQ(parse_fault("bad-marker@0").kind, Fault_Kind::bad_marker);
    EXPECT_EQ(parse_fault("wrong-tag@0").kind, Fault_Kind::wrong_tag);
    EXPECT_EQ(parse_fault("missing-flag@0").kind, Fault_Kind::missing_flag);
    EXPECT_EQ(parse_fault("cut-frame@0").kind, Fault_Kind::cut_frame);
    EXPECT_EQ(parse_fault("unknown-row@0").kind, Fault_Kind::unknown_row);
}

TEST(Fault, ReadsStreamPositionCountAndRate) {
    const Fault placed = parse_fault("lost-row:3@1000+5");
    EXPECT_EQ(placed.stream, 2U);
    EXPECT_EQ(placed.position, 1000U);
    EXPECT_EQ(placed.count, 5U);
    EXPECT_EQ(placed.rate, 0.0);
    const Fault random = parse_fault("lost-row:rhd~0.25");
    EXPECT_EQ(random.stream, 4U);
    EXPECT_EQ(random.rate, 0.25);
    EXPECT_FALSE(parse_fault("lost-row@1").stream.has_value());
    EXPECT_EQ(parse_fault("lost-row@1").count, 1U);
}

TEST(Fault, RefusesWhatItCannotRead) {
    EXPECT_EQ(refusal("lost-row"), "fault 'lost-row' says neither where (@POSITION) nor how often (~RATE)");
    EXPECT_EQ(refusal("lost@3"),
              "unknown fault 'lost' (lost-row, bad-marker, wrong-tag, missing-flag, cut-frame or "
              "unknown-row)");
    EXPECT_EQ(refusal("lost-row:5@3"), "stream '5' is not a port (1 to 4) or rhd");
    EXPECT_EQ(refusal("lost-row:x@3"), "stream 'x' is not a number");
    EXPECT_EQ(refusal("lost-row@x"), "position 'x' is not a number");
    EXPECT_EQ(refusal("lost-row@3+"), "count '' is not a number");
    for (const std::string rate : {"0", "-1", "1.5", "", "nan", "0.1x"}) {
        EXPECT_EQ(refusal("lost-row~" + rate), "rate '" + rate + "' is not a number above 0 and up to 1");
    }
}

TEST(FaultPlan, StrikesAtItsPositionAndSoManyTimes) {
    Fault_Plan plan({parse_fault("lost-row@2+2")}, 1);
    std::vector<bool> struck;
    for (int i = 0; i < 6; ++i) {
        struck.push_back(plan.strikes(Fault_Kind::lost_row, 0));
    }
    EXPECT_EQ(struck, (std::vector<bool>{false, false, true, true, false, false}));
    EXPECT_FALSE(plan.strikes(Fault_Kind::bad_marker, 0));
}

TEST(FaultPlan, CountsTheRowsOfItsStreamOnly) {
    Fault_Plan plan({parse_fault("lost-row:2@1")}, 1);
    EXPECT_FALSE(plan.strikes(Fault_Kind::lost_row, 1));
    EXPECT_FALSE(plan.strikes(Fault_Kind::lost_row, 0));
    EXPECT_FALSE(plan.strikes(Fault_Kind::lost_row, 4));
    EXPECT_TRUE(plan.strikes(Fault_Kind::lost_row, 1));
}

TEST(FaultPlan, EveryFaultCountsForItself) {
    Fault_Plan plan({parse_fault("lost-row@0"), parse_fault("lost-row@1")}, 1);
    EXPECT_TRUE(plan.strikes(Fault_Kind::lost_row, 0));
    EXPECT_TRUE(plan.strikes(Fault_Kind::lost_row, 0));
    EXPECT_FALSE(plan.strikes(Fault_Kind::lost_row, 0));
}

TEST(FaultPlan, ARateStrikesThatOften) {
    Fault_Plan plan({parse_fault("lost-row~0.1")}, 1);
    int struck = 0;
    for (int i = 0; i < 10000; ++i) {
        struck += plan.strikes(Fault_Kind::lost_row, 0) ? 1 : 0;
    }
    EXPECT_NEAR(struck, 1000, 120);
    Fault_Plan always({parse_fault("lost-row~1")}, 1);
    EXPECT_TRUE(always.strikes(Fault_Kind::lost_row, 0));
}

TEST(FaultPlan, IsEmptyWithoutFaults) {
    EXPECT_TRUE(Fault_Plan({}, 1).empty());
    EXPECT_FALSE(Fault_Plan({parse_fault("lost-row@1")}, 1).empty());
}

} // namespace
