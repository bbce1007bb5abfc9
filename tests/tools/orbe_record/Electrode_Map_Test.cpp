#include "Electrode_Map.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>
#include <string>

namespace {

using Pelgar::ORBE::recorder::Electrode_Map;

Electrode_Map map_of(const std::string& text) {
    std::ofstream("map.csv", std::ios::binary | std::ios::trunc) << text;
    return Electrode_Map::of_file("map.csv");
}

std::string refusal_of(const std::string& text) {
    try {
        map_of(text);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

TEST(Electrode_Map, BanksFollowEachOtherAlongTheShank) {
    for (int port = 1; port <= 4; ++port) {
        EXPECT_EQ(Electrode_Map::of_bank(0).electrode(port, 0), 0);
        EXPECT_EQ(Electrode_Map::of_bank(0).electrode(port, 383), 383);
        EXPECT_EQ(Electrode_Map::of_bank(1).electrode(port, 5), 389);
        EXPECT_EQ(Electrode_Map::of_bank(0).electrode(port, 191), -1);
    }
}

TEST(Electrode_Map, LastBankIsFilledUpWithTheOneBefore) {
    const Electrode_Map map = Electrode_Map::of_bank(2);
    EXPECT_EQ(map.electrode(1, 0), 768);
    EXPECT_EQ(map.electrode(1, 190), 958);
    EXPECT_EQ(map.electrode(1, 191), -1);
    EXPECT_EQ(map.electrode(1, 192), 576);
    EXPECT_EQ(map.electrode(1, 383), 767);
}

TEST(Electrode_Map, FileGivesChannelsOfAllProbes) {
    const Electrode_Map map = map_of("# upper half\n\nchannel,electrode\n0,384\n 1 , -1\n200,584\r\n");
    for (int port = 1; port <= 4; ++port) {
        EXPECT_EQ(map.electrode(port, 0), 384);
        EXPECT_EQ(map.electrode(port, 1), -1);
        EXPECT_EQ(map.electrode(port, 2), 2) << "not named";
        EXPECT_EQ(map.electrode(port, 200), 584);
    }
}

TEST(Electrode_Map, FileGivesChannelsOfOneProbe) {
    const Electrode_Map map = map_of("\xEF\xBB\xBFport,channel,electrode\n2,0,384\n4,0,768\n");
    EXPECT_EQ(map.electrode(1, 0), 0);
    EXPECT_EQ(map.electrode(2, 0), 384);
    EXPECT_EQ(map.electrode(3, 0), 0);
    EXPECT_EQ(map.electrode(4, 0), 768);
}

TEST(Electrode_Map, MistakesAreToldWithTheirLine) {
    const std::string head = "channel,electrode\n";
    EXPECT_EQ(refusal_of(head + "0,0\n5,6\n"),
              "electrode map 'map.csv', line 3: electrode 6 is one of channel 6 and not of channel 5");
    EXPECT_EQ(refusal_of(head + "384,0\n"),
              "electrode map 'map.csv', line 2: channel 384 is none of 0 to 383");
    EXPECT_EQ(refusal_of(head + "200,968\n"),
              "electrode map 'map.csv', line 2: electrode 968 is none of 0 to 959");
    EXPECT_EQ(refusal_of(head + "191,191\n"),
              "electrode map 'map.csv', line 2: channel 191 is the probe's reference and takes no electrode");
    EXPECT_EQ(refusal_of(head + "0,x\n"), "electrode map 'map.csv', line 2: 'x' is no whole number");
    EXPECT_EQ(refusal_of(head + "0,\n"), "electrode map 'map.csv', line 2: '' is no whole number");
    EXPECT_EQ(refusal_of(head + "0\n"), "electrode map 'map.csv', line 2: 1 numbers and not 2");
    EXPECT_EQ(refusal_of(head + "1,0,0\n"), "electrode map 'map.csv', line 2: 3 numbers and not 2");
    EXPECT_EQ(refusal_of(head + "0,0\n0,384\n"),
              "electrode map 'map.csv', line 3: channel 0 stands here again");
    EXPECT_EQ(refusal_of("port,channel,electrode\n5,0,0\n"),
              "electrode map 'map.csv', line 2: port 5 is none of 1 to 4");
    EXPECT_EQ(refusal_of("0,0\n"), "electrode map 'map.csv', line 1: the first line must be "
                                   "'channel,electrode' or 'port,channel,electrode'");
    EXPECT_EQ(refusal_of(""), "electrode map 'map.csv', line 0: the file is empty");
    EXPECT_THROW(Electrode_Map::of_file("missing.csv"), std::invalid_argument);
    EXPECT_THROW(Electrode_Map::of_file("."), std::invalid_argument);
}

} // namespace
