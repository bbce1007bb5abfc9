#include "adapter/Sweep_Log_Throttle.h"

#include <gtest/gtest.h>
#include <loguru.hpp>

#include <limits>

namespace {

using Pelgar::ORBE::npoe_adapter::Sweep_Log_Throttle;

bool logs(Sweep_Log_Throttle& throttle, int channel) {
    const int verbosity = throttle.verbosity_for(channel);
    EXPECT_TRUE(verbosity == 0 || verbosity > loguru::Verbosity_MAX);
    return verbosity == 0;
}

TEST(SweepLogThrottle, OnlyTheFirstOfARisingRunIsLogged) {
    Sweep_Log_Throttle throttle;
    EXPECT_TRUE(logs(throttle, 5));
    EXPECT_FALSE(logs(throttle, 6));
    EXPECT_FALSE(logs(throttle, 7));
    EXPECT_TRUE(logs(throttle, 7));
    EXPECT_TRUE(logs(throttle, 5));
}

TEST(SweepLogThrottle, ChannelZeroIsTheFirstOfARun) {
    Sweep_Log_Throttle throttle;
    EXPECT_TRUE(logs(throttle, 0));
    EXPECT_FALSE(logs(throttle, 1));
}

TEST(SweepLogThrottle, StartsBeforeChannelMinusOne) {
    Sweep_Log_Throttle throttle;
    EXPECT_FALSE(logs(throttle, -1)) << "the last channel starts at -2";
}

TEST(SweepLogThrottle, LargestNumberHasNoSuccessor) {
    Sweep_Log_Throttle throttle;
    EXPECT_TRUE(logs(throttle, std::numeric_limits<int>::max()));
    EXPECT_TRUE(logs(throttle, std::numeric_limits<int>::min()));
}

} // namespace
