#include "Progress_Bar.h"

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

TEST(ProgressBar, IsSilentWhereThereIsNoTerminal) {
    testing::internal::CaptureStderr();
    {
        Progress_Bar bar("W", 10);
        bar.show(5);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
