#include "common/Parse_Number.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using Pelgar::ORBE::parse_float;
using Pelgar::ORBE::parse_int;

template <typename Exception, typename Call>
std::string text_of(Call call) {
    try {
        call();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "nothing was thrown";
}

TEST(ParseNumber, ReadsTheNumberAtTheStartOfTheText) {
    EXPECT_EQ(parse_float("1.25"), 1.25F);
    EXPECT_EQ(parse_float("0.5\r"), 0.5F);
    EXPECT_EQ(parse_float(" -3e2xyz"), -300.0F);
    EXPECT_EQ(parse_int("42"), 42);
    EXPECT_EQ(parse_int(" -7 rest"), -7);
}

TEST(ParseNumber, TextWithoutANumberIsAnInvalidArgument) {
    EXPECT_EQ(text_of<std::invalid_argument>([] { parse_float("abc"); }), "invalid stof argument");
    EXPECT_EQ(text_of<std::invalid_argument>([] { parse_float(""); }), "invalid stof argument");
    EXPECT_EQ(text_of<std::invalid_argument>([] { parse_int("abc"); }), "invalid stoi argument");
}

TEST(ParseNumber, TooLargeANumberIsOutOfRange) {
    EXPECT_EQ(text_of<std::out_of_range>([] { parse_float("1e99"); }), "stof argument out of range");
    EXPECT_EQ(text_of<std::out_of_range>([] { parse_int("99999999999"); }), "stoi argument out of range");
}

} // namespace
