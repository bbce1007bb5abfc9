#include "web/Close_Reason.h"

#include <gtest/gtest.h>

namespace Pelgar::ORBE::view {

namespace {

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int time = 0; time < times; ++time) {
        all += text;
    }
    return all;
}

TEST(Close_Reason, WhatFitsStaysAsItIs) {
    EXPECT_EQ(close_reason_of(""), "");
    EXPECT_EQ(close_reason_of("orbe-view takes text"), "orbe-view takes text");
    EXPECT_EQ(close_reason_of(std::string(123, 'x')), std::string(123, 'x'));
    const std::string full = std::string(121, 'x') + "é";
    EXPECT_EQ(close_reason_of(full), full);
}

TEST(Close_Reason, OfWhatIsTooLongTheBeginningStays) {
    EXPECT_EQ(close_reason_of(std::string(124, 'x')), std::string(123, 'x'));
    EXPECT_EQ(close_reason_of(std::string(4000, 'x')), std::string(123, 'x'));
}

TEST(Close_Reason, IsCutBetweenCharacters) {
    EXPECT_EQ(close_reason_of(repeated("é", 100)), repeated("é", 61)); // of two bytes
    EXPECT_EQ(close_reason_of(repeated("€", 100)), repeated("€", 41)); // of three, 123 in all
    EXPECT_EQ(close_reason_of("x" + repeated("€", 100)), "x" + repeated("€", 40));
    EXPECT_EQ(close_reason_of(repeated("😀", 100)), repeated("😀", 30)); // of four
    EXPECT_EQ(close_reason_of(std::string(122, 'x') + "😀"), std::string(122, 'x'));
}

// As bytes that are no UTF-8 would be.
TEST(Close_Reason, EndsWhereNoCharacterBegins) {
    EXPECT_EQ(close_reason_of(std::string(200, '\x80')), "");
}

} // namespace

} // namespace Pelgar::ORBE::view
