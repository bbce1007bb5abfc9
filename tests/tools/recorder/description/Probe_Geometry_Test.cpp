#include "probe_geometry/Probe_Geometry.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <stdexcept>
#include <utility>

namespace {

using namespace Pelgar::ORBE::recorder;

TEST(Probe_Geometry, StaggersTheRows) {
    const Probe_Geometry geometry = geometry_of("PRB_1_4_0480_1");
    const std::array<Electrode_Position, 5> first{{{27, 0}, {59, 0}, {11, 20}, {43, 20}, {27, 40}}};
    for (int electrode = 0; electrode < 5; ++electrode) {
        EXPECT_EQ(position_of(geometry, electrode), first.at(static_cast<std::size_t>(electrode)))
            << electrode;
    }
    EXPECT_EQ(position_of(geometry, 959), (Electrode_Position{43, 9580}));
}

TEST(Probe_Geometry, HasStraightColumnsOnWideShanks) {
    EXPECT_EQ(position_of(geometry_of("NP1015"), 2), (Electrode_Position{11, 20}));
    EXPECT_EQ(position_of(geometry_of("NP1015"), 3), (Electrode_Position{114, 20}));
}

TEST(Probe_Geometry, GivesEachElectrodeAPlaceOfItsOwn) {
    std::set<std::pair<double, double>> places;
    for (int electrode = 0; electrode < electrode_count; ++electrode) {
        const Electrode_Position position = position_of(geometry_of(""), electrode);
        EXPECT_TRUE(places.insert({position.x, position.y}).second) << electrode;
    }
    EXPECT_THROW(position_of(geometry_of(""), -1), std::out_of_range);
    EXPECT_THROW(position_of(geometry_of(""), 960), std::out_of_range);
}

TEST(Probe_Geometry, LetsEachChannelBeReadOnce) {
    std::set<std::size_t> channels;
    for (std::size_t converter = 0; converter < converter_count; ++converter) {
        for (std::size_t turn = 0; turn < turn_count; ++turn) {
            channels.insert(channel_read(converter, turn));
        }
    }
    EXPECT_EQ(channels.size(), channel_count);
    EXPECT_EQ(*channels.rbegin(), channel_count - 1);
    EXPECT_EQ(channel_read(1, 0), 1U);
    EXPECT_EQ(channel_read(2, 0), 24U);
    EXPECT_EQ(channel_read(0, 1), 2U);
}

} // namespace
