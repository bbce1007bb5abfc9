#include "folders/Gap_List.h"

#include "Temp_Directory.h"
#include "folders/Gap_Table_Reader.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// Lists of many blocks, and copies of them.
TEST(Gap_List, IsTheSameHoweverItWasMade) {
    constexpr std::uint64_t count = 5'000;
    std::vector<Sample_Range> ranges;
    Gap_List added;
    std::vector<Gap_List> copies;
    for (std::uint64_t gap = 0; gap < count; ++gap) {
        ranges.push_back({gap * 10 + 3, gap * 10 + 5});
        EXPECT_TRUE(added.add(ranges.back()));
        if (gap % 1000 == 500) {
            copies.push_back(added);
        }
    }
    EXPECT_EQ(added.all(), ranges);
    EXPECT_FALSE(added.add({7, 8}));
    EXPECT_EQ(added.all(), ranges);
    std::reverse(ranges.begin(), ranges.end());
    const Gap_List made(ranges);
    for (const Gap_List* const list : std::initializer_list<const Gap_List*>{&added, &made}) {
        for (std::uint64_t sample = 0; sample < count * 10 + 20; sample += 7) {
            const std::uint64_t whole = std::min(sample / 10, count);
            const std::uint64_t part =
                sample / 10 < count ? std::clamp<std::uint64_t>(sample % 10, 3, 5) - 3 : 0;
            ASSERT_EQ(list->lost_in({0, sample}), whole * 2 + part) << sample;
            const auto stretch = list->stretch_at(sample);
            const bool is_lost = sample / 10 < count && (sample % 10 == 3 || sample % 10 == 4);
            ASSERT_EQ(stretch.is_lost, is_lost) << sample;
            const std::uint64_t next = (sample / 10 + (sample % 10 >= 5 ? 1 : 0)) * 10 + 3;
            ASSERT_EQ(stretch.end, is_lost             ? sample / 10 * 10 + 5
                                   : next < count * 10 ? next
                                                       : endless)
                << sample;
        }
    }
    for (std::size_t copy = 0; copy < copies.size(); ++copy) {
        EXPECT_EQ(copies[copy].lost_in({0, endless}), (copy * 1000 + 501) * 2);
    }
    // The last one becomes longer, in this list alone.
    const Gap_List before = added;
    EXPECT_TRUE(added.add({count * 10 - 5, count * 10}));
    EXPECT_EQ(added.lost_in({0, endless}), count * 2 + 5);
    EXPECT_EQ(before.lost_in({0, endless}), count * 2);
}

TEST(Gap_Table_Reader, ReadsATableThatGrowsAsOneThatIsWhole) {
    const test::Temp_Directory folder;
    Gap_Table_Reader follower(folder.path());
    std::ofstream file(folder.path() / "gaps.csv", std::ios::binary);
    file << "stream,sample,length\n";
    for (std::uint64_t line = 0; line < 300; ++line) {
        file << (line % 3 == 0 ? "obx0," : "imec0.ap,") << line * 5 << "," << 1 + line % 4;
        file.flush();
        follower.look(); // within a line
        file << (line == 200 ? ",x" : "") << "\n";
        file.flush();
        follower.look();
    }
    Gap_Table_Reader whole(folder.path());
    whole.look();
    EXPECT_TRUE(whole.problem().starts_with("line 202 of ")) << whole.problem();
    EXPECT_EQ(follower.problem(), whole.problem());
    for (const char* const stream : {"obx0", "imec0.ap"}) {
        EXPECT_EQ(follower.gaps()->at(stream).all(), whole.gaps()->at(stream).all());
    }
    EXPECT_EQ(follower.gaps()->at("obx0").all().size(), 100U);
}

TEST(Gap_Table_Reader, SeesThatATableIsAnother) {
    const test::Temp_Directory folder;
    Gap_Table_Reader table(folder.path());
    write_table(folder.path(), "stream,sample,length\nobx0,7,2\nimec0.ap,x,1\nobx0,90,1\n");
    table.look();
    EXPECT_NE(table.problem(), "");
    // Mended: longer than before, with other lines.
    write_table(folder.path(), "stream,sample,length\nobx0,7,2\nobx0,20,5\nobx0,90,1\nimec0.ap,4,11\n");
    table.look();
    EXPECT_EQ(table.problem(), "");
    EXPECT_EQ(table.gaps()->at("obx0").lost_in({0, 100}), 8U);
    EXPECT_EQ(table.gaps()->at("imec0.ap").lost_in({0, 100}), 11U);
    // Shorter; and not in order, which it need not be.
    write_table(folder.path(), "stream,sample,length\nobx0,50,1\nobx0,10,2\n");
    table.look();
    EXPECT_EQ(table.gaps()->at("obx0").all(), (std::vector<Sample_Range>{{10, 12}, {50, 51}}));
    EXPECT_FALSE(table.gaps()->contains("imec0.ap"));
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
