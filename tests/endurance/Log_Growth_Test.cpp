// Lines that come all the time are found; those of an opening are not counted.
#include "Log_Growth.h"

#include <gtest/gtest.h>

namespace {

using Pelgar::ORBE::test::Log_Growth;
using Pelgar::ORBE::test::Process_State;

constexpr std::uint64_t hour = std::uint64_t{3600} * 30'000;

Process_State wrote(std::uint64_t log_bytes, std::uint64_t printed_bytes) {
    Process_State state;
    state.log_bytes = log_bytes;
    state.printed_bytes = printed_bytes;
    return state;
}

TEST(Log_Growth, WhatIsWrittenBetweenOpeningsIsFree) {
    Log_Growth growth;
    growth.begin(wrote(50'000, 100'000));
    growth.end(wrote(50'000, 100'000), hour);
    growth.begin(wrote(100'000'000, 100'000'000));
    growth.end(wrote(100'000'000, 100'000'000), hour);
    EXPECT_EQ(growth.fault(1), "");
}

TEST(Log_Growth, LogThatGrowsWhileStreamingIsFound) {
    Log_Growth growth;
    growth.begin(wrote(50'000, 0));
    growth.end(wrote(51'024, 0), 24 * hour);
    EXPECT_EQ(growth.fault(1), "");
    growth.begin(wrote(51'024, 0));
    growth.end(wrote(52'049, 0), 24 * hour);
    EXPECT_EQ(growth.fault(1), "ORBE.log grew by 2049 bytes while streaming");
}

TEST(Log_Growth, PrintedLinesMayBeSoManyAnHourAndPort) {
    Log_Growth growth;
    growth.begin(wrote(0, 0));
    growth.end(wrote(0, (16U << 10U) + 2 * 2 * (2U << 20U)), 2 * hour);
    EXPECT_EQ(growth.fault(2), "");
    EXPECT_EQ(growth.fault(1), "8404992 bytes were printed while streaming, 4210688 are allowed");
}

} // namespace
