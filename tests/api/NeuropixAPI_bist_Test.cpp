// The self-test functions without a box: before a basestation is open, and in simulation mode, where nothing
// can be tested.
#include "Logged_Call_Fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Neuropixels;
using Pelgar::ORBE::test::Logged_Call_Fixture;

class Self_Test_Functions : public Logged_Call_Fixture {};

TEST_F(Self_Test_Functions, BasestationPassesWhileItIsOpen) {
    EXPECT_EQ(bistBS(0), FAILED);
    EXPECT_EQ(logged_lines(), (std::vector<std::string>{"0 { bistBS", "0 } bistBS"}));
    open_simulation(mebibyte);
    m_log.clear();
    EXPECT_EQ(bistBS(7), SUCCESS);
    EXPECT_TRUE(m_log.has_scope(0, "bistBS"));
    closeBS(0);
    EXPECT_EQ(bistBS(0), FAILED);
}

TEST_F(Self_Test_Functions, FailWithoutABasestation) {
    int errors = -1;
    const std::vector<std::pair<std::string, NP_ErrorCode>> results{
        {"bistEEPROM", bistEEPROM(0, 1)},
        {"bistHB", bistHB(0, 1, 0)},
        {"bistI2CMM", bistI2CMM(0, 1, 0)},
        {"bistSR", bistSR(0, 1, 0)},
        {"bistPSB", bistPSB(0, 1, 0)},
        {"bistStartPRBS", bistStartPRBS(0, 1)},
        {"bistStopPRBS", bistStopPRBS(0, 1, &errors)}};
    for (const auto& [name, result] : results) {
        EXPECT_EQ(result, FAILED) << name;
        EXPECT_TRUE(m_log.has_scope(0, name));
        EXPECT_EQ(m_log.count(-2, name + " : no basestation is open"), 1);
    }
    EXPECT_EQ(errors, 0);
}

TEST_F(Self_Test_Functions, PassInSimulationWhereThereIsNothingToTest) {
    open_simulation(mebibyte);
    m_log.clear();
    EXPECT_EQ(bistEEPROM(0, 1), SUCCESS);
    EXPECT_EQ(bistHB(0, 1, 0), SUCCESS);
    EXPECT_EQ(bistI2CMM(0, 1, 0), SUCCESS);
    EXPECT_EQ(bistSR(0, 1, 0), SUCCESS);
    for (const char* const name : {"bistEEPROM", "bistHB", "bistI2CMM", "bistSR"}) {
        EXPECT_TRUE(m_log.has_scope(0, name));
    }
}

} // namespace
