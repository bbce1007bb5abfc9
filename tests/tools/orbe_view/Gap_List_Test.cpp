#include "folders/Gap_List.h"

#include "Temp_Directory.h"
#include "folders/Gap_Table_Reader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>

namespace Pelgar::ORBE::view {

namespace {

constexpr std::uint64_t endless = std::numeric_limits<std::uint64_t>::max();

void write_table(const std::filesystem::path& folder, const std::string& text) {
    std::ofstream(folder / "gaps.csv", std::ios::binary | std::ios::trunc) << text;
}

} // namespace

TEST(Gap_List, CountsWhatIsLostInAnyRange) {
    const Gap_List gaps({{100, 110}, {20, 25}, {105, 130}, {130, 131}, {500, 500}});
    EXPECT_EQ(gaps.lost_in({0, 1000}), 5U + 31U);
    EXPECT_EQ(gaps.lost_in({0, 20}), 0U);
    EXPECT_EQ(gaps.lost_in({0, 21}), 1U);
    EXPECT_EQ(gaps.lost_in({22, 101}), 4U);
    EXPECT_EQ(gaps.lost_in({129, 140}), 2U);
    EXPECT_EQ(gaps.lost_in({131, 1000}), 0U);
    EXPECT_EQ(gaps.lost_in({110, 110}), 0U);
    EXPECT_EQ(Gap_List().lost_in({0, endless}), 0U);
}

TEST(Gap_List, TellsHowFarItIsToTheNextChange) {
    const Gap_List gaps({{20, 25}});
    const auto at = [&](std::uint64_t sample) {
        const auto stretch = gaps.stretch_at(sample);
        return std::pair(stretch.end, stretch.is_lost);
    };
    EXPECT_EQ(at(0), std::pair(std::uint64_t{20}, false));
    EXPECT_EQ(at(20), std::pair(std::uint64_t{25}, true));
    EXPECT_EQ(at(24), std::pair(std::uint64_t{25}, true));
    EXPECT_EQ(at(25), std::pair(endless, false));
}

TEST(Gap_Table_Reader, ReadsALineOnceItIsWhole) {
    const test::Temp_Directory folder;
    write_table(folder.path(), "stream,sample,length\nobx0,7,2\nimec0.ap,100,1");
    Gap_Table_Reader table(folder.path());
    table.look();
    EXPECT_EQ(table.problem(), "");
    const auto before = table.gaps();
    EXPECT_EQ(before->size(), 1U);
    EXPECT_EQ(before->at("obx0").lost_in({0, 100}), 2U);
    write_table(folder.path(), "stream,sample,length\nobx0,7,2\nimec0.ap,100,12\nobx0,50,1\n");
    table.look();
    EXPECT_EQ(table.gaps()->at("imec0.ap").lost_in({0, 1000}), 12U);
    EXPECT_EQ(table.gaps()->at("obx0").lost_in({0, 100}), 3U);
    EXPECT_EQ(before->at("obx0").lost_in({0, 100}), 2U); // is somebody else's
}

TEST(Gap_Table_Reader, SaysWhichLineIsDamagedAndTakesTheOthers) {
    const test::Temp_Directory folder;
    for (const std::string line : {"imec0.ap,x,1", "imec0.ap,1", "imec0.ap,5,18446744073709551615", ""}) {
        write_table(folder.path(), "stream,sample,length\nobx0,7,2\n" + line + "\nobx0,20,1\n");
        Gap_Table_Reader table(folder.path());
        table.look();
        EXPECT_EQ(table.problem(), "line 3 of '" + (folder.path() / "gaps.csv").string() +
                                       "' is damaged: what it tells of looks like zeros; orbe-record repair "
                                       "mends the folder");
        EXPECT_EQ(table.gaps()->at("obx0").lost_in({0, 100}), 3U);
    }
    write_table(folder.path(), "something else\nobx0,7,2\n");
    Gap_Table_Reader table(folder.path());
    table.look();
    EXPECT_TRUE(table.problem().starts_with("line 1 of ")) << table.problem();
}

TEST(Gap_Table_Reader, SaysThatThereIsNoTableUntilThereIsOne) {
    const test::Temp_Directory folder;
    Gap_Table_Reader table(folder.path());
    table.look();
    EXPECT_EQ(table.problem(),
              "cannot read '" + (folder.path() / "gaps.csv").string() + "': lost samples look like zeros");
    write_table(folder.path(), "stream,sample,length\n");
    table.look();
    EXPECT_EQ(table.problem(), "");
    EXPECT_TRUE(table.gaps()->empty());
}

} // namespace Pelgar::ORBE::view
