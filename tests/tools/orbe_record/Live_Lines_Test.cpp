#include "Live_Lines.h"

#include <gtest/gtest.h>

namespace {

using Pelgar::ORBE::recorder::Live_Line;
using Pelgar::ORBE::recorder::Live_Lines;

TEST(Live_Lines, HaveALineAStream) {
    EXPECT_EQ(Live_Lines::text({{"probe 1", 12.34, 24.96e6, 0.031, 0}, {"ADC", 12.3, 0.78e6, 1.0, 1200}},
                               123'400'000'000, 200),
              "stream   time, s  MB/s  queue, %  lost samples  disk left, GB\n"
              "probe 1     12.3  25.0         3             0          123.4\n"
              "ADC         12.3   0.8       100          1200          123.4\n");
}

TEST(Live_Lines, FitNarrowTerminals) {
    const std::string text = Live_Lines::text({{"probe 1", 1.0, 1e6, 0.0, 0}}, 1'000'000'000, 30);
    EXPECT_EQ(text, "probe 1\n  time, s: 1.0\n  MB/s: 1.0\n  queue, %: 0\n  lost samples: 0\n"
                    "  disk left, GB: 1.0\n");
}

} // namespace
