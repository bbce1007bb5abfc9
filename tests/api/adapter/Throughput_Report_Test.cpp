#include "adapter/Throughput_Report.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using Pelgar::ORBE::npoe_adapter::report_throughput;

constexpr std::int64_t second = 1'000'000'000;

std::string reported(unsigned port, int packets, std::int64_t now_ns) {
    testing::internal::CaptureStdout();
    report_throughput(port, packets, now_ns);
    return testing::internal::GetCapturedStdout();
}

// Reads that only bring the port's counter round to its next look at the clock.
void read_255_times(unsigned port, std::int64_t now_ns) {
    for (int i = 0; i < 255; ++i) {
        ASSERT_EQ(reported(port, 1, now_ns), "");
    }
}

TEST(ThroughputReport, DividesTheFullBoxByTheWholeSecondsSinceTheLastLook) {
    EXPECT_EQ(reported(1, 16, 10 * second), "16 electrode packet transferred. NP port : 1, data : 15 MB/s\n");
    read_255_times(1, 100 * second);
    EXPECT_EQ(reported(1, 4, 12 * second), "4 electrode packet transferred. NP port : 1, data : 78 MB/s\n");
    read_255_times(1, 12 * second);
    EXPECT_EQ(reported(1, 1, 14 * second - 1),
              "1 electrode packet transferred. NP port : 1, data : 157 MB/s\n");
}

TEST(ThroughputReport, PrintsNothingWithinASecondAndLooksAnewAllTheSame) {
    reported(0, 1, 50 * second);
    read_255_times(0, 50 * second);
    EXPECT_EQ(reported(0, 1, 51 * second - 1), "");
    read_255_times(0, 51 * second);
    EXPECT_EQ(reported(0, 1, 52 * second - 2), "") << "the silent look counts as the last one";
    read_255_times(0, 52 * second);
    EXPECT_EQ(reported(0, 1, 55 * second), "1 electrode packet transferred. NP port : 0, data : 52 MB/s\n");
}

TEST(ThroughputReport, PortsCountForThemselvesAndShareTheTime) {
    EXPECT_NE(reported(2, 1, 200 * second), "");
    EXPECT_EQ(reported(3, 1, 200 * second + 1), "");
    EXPECT_EQ(reported(2, 1, 300 * second), "") << "only every 256th read of a port looks";
}

} // namespace
