#include "back_ends/Bar_Mapping_Error.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using Pelgar::ORBE::bar_mapping_error_text;

TEST(BarMappingError, TextIsAdvancedByTheErrorCode) {
    EXPECT_STREQ(bar_mapping_error_text(0), "map bar ioctl failed!");
    EXPECT_STREQ(bar_mapping_error_text(1), "ap bar ioctl failed!");
    EXPECT_STREQ(bar_mapping_error_text(5), "ar ioctl failed!");
    EXPECT_STREQ(bar_mapping_error_text(20), "!");
    EXPECT_STREQ(bar_mapping_error_text(21), "");
}

TEST(BarMappingError, LargerCodesLeadIntoTheTextsBehind) {
    EXPECT_STREQ(bar_mapping_error_text(22), " sized bar mapped to user space\n");
    EXPECT_STREQ(bar_mapping_error_text(31), "r mapped to user space\n");
    EXPECT_STREQ(bar_mapping_error_text(50), "ace\n");
}

TEST(BarMappingError, CodesBehindAllTextsLeaveNothing) {
    EXPECT_STREQ(bar_mapping_error_text(1450), "");
    EXPECT_STREQ(bar_mapping_error_text(std::numeric_limits<std::uint32_t>::max()), "");
}

TEST(BarMappingError, EveryCodeGivesAText) {
    // One character less with every code, and a whole new text behind each end.
    for (std::uint32_t code = 0; code < 400; ++code) {
        const char* const text = bar_mapping_error_text(code);
        if (*text != '\0') {
            EXPECT_STREQ(bar_mapping_error_text(code + 1), text + 1) << code;
        }
    }
}

} // namespace
