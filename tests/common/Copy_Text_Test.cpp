#include "common/Copy_Text.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

namespace {

using Pelgar::ORBE::copy_text;

constexpr char untouched = '#';

// What a buffer of eight characters holds after a text was copied into its first `length` ones.
std::string buffer_after(std::string_view text, std::size_t length) {
    std::array<char, 8> buffer{};
    buffer.fill(untouched);
    EXPECT_EQ(copy_text(text, buffer.data(), length), text.size());
    return {buffer.data(), buffer.size()};
}

TEST(Copy_Text, ClosesTheTextAndLeavesTheRest) {
    EXPECT_EQ(buffer_after("abc", 8), std::string("abc\0####", 8));
    EXPECT_EQ(buffer_after("", 8), std::string("\0#######", 8));
}

TEST(Copy_Text, CutsWhatDoesNotFit) {
    EXPECT_EQ(buffer_after("abcdefg", 8), std::string("abcdefg\0", 8));
    EXPECT_EQ(buffer_after("abcdefg", 4), std::string("abc\0####", 8));
    EXPECT_EQ(buffer_after("abcdefg", 1), std::string("\0#######", 8));
}

TEST(Copy_Text, SkipsABufferWithoutRoom) {
    EXPECT_EQ(buffer_after("abc", 0), "########");
    EXPECT_EQ(copy_text("abc", nullptr, 8), 3U);
}

} // namespace
