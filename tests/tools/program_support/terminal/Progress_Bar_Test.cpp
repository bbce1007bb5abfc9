#include "terminal/Progress_Bar.h"

#include <gtest/gtest.h>

namespace {

using Pelgar::ORBE::tools::Progress_Bar;

TEST(ProgressBar, ShowsHowFarTheWorkIs) {
    EXPECT_EQ(Progress_Bar::line("Writing", 0, 10, ""),
              "Writing [........................................]   0 %");
    EXPECT_EQ(Progress_Bar::line("Writing", 5, 10, "x"),
              "Writing [####################....................]  50 %  x");
    EXPECT_EQ(Progress_Bar::line("Writing", 10, 10, ""),
              "Writing [########################################] 100 %");
}

TEST(ProgressBar, NeverShowsMoreThanEverything) {
    EXPECT_EQ(Progress_Bar::line("W", 20, 10, ""), "W [########################################] 100 %");
    EXPECT_EQ(Progress_Bar::line("W", 0, 0, ""), "W [########################################] 100 %");
}

TEST(ProgressBar, FitsTheTerminal) {
    const std::string full = Progress_Bar::line("Writing", 5, 10, "12 packets", 200);
    EXPECT_EQ(Progress_Bar::line("Writing", 5, 10, "12 packets", full.size()), full);
    EXPECT_EQ(Progress_Bar::line("Writing", 5, 10, "12 packets", 38),
              "Writing [#####.....]  50 %  12 packets");
    EXPECT_EQ(Progress_Bar::line("Writing", 5, 10, "12 packets", 35), "Writing [#########..........]  50 %");
    EXPECT_EQ(Progress_Bar::line("Writing", 5, 10, "", 20), "Writing  50 %");
    EXPECT_EQ(Progress_Bar::line("Writing", 5, 10, "", 10), "Writ  50 %");
    EXPECT_EQ(Progress_Bar::line("Writing", 5, 10, "", 5), " 50 %");
    EXPECT_EQ(Progress_Bar::line("Writing", 10, 10, "", 3), "100");
}

TEST(ProgressBar, IsSilentWhereThereIsNoTerminal) {
    testing::internal::CaptureStderr();
    {
        Progress_Bar bar("W", 10);
        bar.show(5);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
