#include "terminal/Text_Format.h"

#include "terminal/Text_Table.h"

#include <gtest/gtest.h>

namespace {

using namespace Pelgar::ORBE::tools;

TEST(TextFormat, CountsInWords) {
    EXPECT_EQ(counted(0, "packet", "packets"), "0 packets");
    EXPECT_EQ(counted(1, "packet", "packets"), "1 packet");
    EXPECT_EQ(counted(2, "packet", "packets"), "2 packets");
}

TEST(TextFormat, BreaksLinesAtBlanks) {
    EXPECT_EQ(wrapped("one two three four", 9), "one two\nthree\nfour");
    EXPECT_EQ(wrapped("one two three", 13), "one two three");
    EXPECT_EQ(wrapped("one two three", 12), "one two\nthree");
    EXPECT_EQ(wrapped("", 10), "");
    EXPECT_EQ(wrapped("one\n\ntwo three\n", 5), "one\n\ntwo\nthree\n");
}

TEST(TextFormat, WhatIsLeftOfALineIsIndented) {
    EXPECT_EQ(wrapped("  port 1: one two", 11, 2), "  port 1:\n    one two");
    EXPECT_EQ(wrapped("a b\nc d", 2, 1), "a\n b\nc\n d");
}

TEST(TextFormat, AWordIsNeverBroken) {
    EXPECT_EQ(wrapped("/a/long/path it is", 5), "/a/long/path\nit is");
    EXPECT_EQ(wrapped("  /a/long/path", 5), "  /a/long/path");
    EXPECT_EQ(wrapped("word", 0), "word");
    EXPECT_EQ(wrapped("two words   ", 9), "two words   ");
}

Text_Table table() {
    Text_Table table({"Stream", "expected", "seconds"});
    table.add({"port 1", "12", "0.5"});
    table.add({"RHD ADC", "1234567890", "-"});
    return table;
}

TEST(TextTable, FitsItsColumns) {
    EXPECT_EQ(table().text(28), "Stream     expected  seconds\n"
                                "port 1           12      0.5\n"
                                "RHD ADC  1234567890        -\n");
}

TEST(TextTable, WritesItsLinesOutWhereItDoesNotFit) {
    EXPECT_EQ(table().text(27), "port 1\n"
                                "  expected: 12\n"
                                "  seconds: 0.5\n"
                                "RHD ADC\n"
                                "  expected: 1234567890\n"
                                "  seconds: -\n");
}

} // namespace
