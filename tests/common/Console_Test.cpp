#include "common/Console.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace {

namespace console = Pelgar::ORBE::console;

TEST(Console, ComposesPartsInOrder) {
    EXPECT_EQ(console::compose("a ", std::string("b "), 1, " ", -2, " ", std::uint8_t{200}, '\n'),
              "a b 1 -2 200\n");
}

TEST(Console, HexIsLowerCaseWithoutPrefixAndLeaksIntoNothing) {
    EXPECT_EQ(console::compose("0x", console::Hex{0x10AB}, " ", 16), "0x10ab 16");
    EXPECT_EQ(console::compose(console::Hex{0}), "0");
}

TEST(Console, RealNumbersHaveSixSignificantDigits) {
    EXPECT_EQ(console::compose(12.5F, " ", 1183.71212121), "12.5 1183.71");
}

TEST(Console, WritesToTheNamedStream) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    console::out("to out ", 1, "\n");
    console::err("to err ", 2, "\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "to err 2\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "to out 1\n");
}

TEST(Console, WritesTheSameBytesOnEverySystemInTheOrderOfAllOutput) {
    std::FILE* stream = std::fopen("lines.txt", "w");
    ASSERT_NE(stream, nullptr);
    std::fputs("[", stream);
    console::write(stream, "one\ntwo\n");
    std::fputs("]", stream);
    std::fclose(stream);
    std::ostringstream bytes;
    bytes << std::ifstream("lines.txt", std::ios::binary).rdbuf();
    EXPECT_EQ(bytes.str(), "[one\ntwo\n]");
}

} // namespace
