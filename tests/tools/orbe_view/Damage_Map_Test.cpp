#include "sources/Damage_Map.h"

#include <gtest/gtest.h>

namespace Pelgar::ORBE::view {

namespace {

std::vector<Damage_Counts> shown(const Damage_Map& map, std::uint64_t length, std::size_t stretches) {
    std::vector<Damage_Counts> damage(stretches);
    map.show(length, damage);
    return damage;
}

} // namespace

TEST(Damage_Map, ShowsEachDamageInItsStretch) {
    Damage_Map map;
    map.add(0, {1, 0, 0, 0, 0});
    map.add(999, {0, 2, 0, 0, 0});
    map.add(999, {0, 0, 3, 0, 0});
    map.add(1000, {0, 0, 0, 0, 0}); // nothing is wrong there
    map.add(4999, {0, 0, 0, 4, 5});
    const auto damage = shown(map, 5000, 5);
    EXPECT_EQ(damage, (std::vector<Damage_Counts>{{1, 2, 3, 0, 0}, {}, {}, {}, {0, 0, 0, 4, 5}}));
    // Of a recording that has become longer, and of one whose length is not known.
    EXPECT_EQ(shown(map, 50'000, 10)[0].all(), 15U);
    EXPECT_EQ(shown(map, 0, 1)[0].all(), 0U);
    EXPECT_TRUE(shown(map, 5000, 0).empty());
}

TEST(Damage_Map, LosesNothingHoweverMuchThereIs) {
    constexpr std::uint64_t places = 100'000;
    constexpr std::uint64_t between = 500;
    Damage_Map map;
    for (std::uint64_t place = 0; place < places; ++place) {
        map.add(place * between, {1, 0, 0, 0, 0});
    }
    constexpr std::size_t stretches = 100;
    const auto damage = shown(map, places * between, stretches);
    std::uint64_t sum = 0;
    for (const Damage_Counts& counts : damage) {
        sum += counts.row_gaps;
        // Within half a thousandth of the whole each is where it was.
        EXPECT_NEAR(counts.row_gaps, places / stretches, places / 2000 + 1);
    }
    EXPECT_EQ(sum, places);
}

} // namespace Pelgar::ORBE::view
