#include "Printf_Format.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstddef>
#include <string>

namespace {

std::string formatted(const char* format, ...) LOGURU_SUBSET_PRINTF_FORMAT(1, 2);

std::string formatted(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = loguru::detail::format_text(format, arguments);
    va_end(arguments);
    return text;
}

TEST(PrintfFormat, TakesTheFormatsOfTheLanguage) {
    EXPECT_EQ(formatted("nothing"), "nothing");
    EXPECT_EQ(
        formatted("%d %u %s 0x%08X %.2f %zu %lld %%", -3, 7U, "text", 0xABCU, 1.25, std::size_t{9}, -1LL),
        "-3 7 text 0x00000ABC 1.25 9 -1 %");
}

TEST(PrintfFormat, TextsMayHaveAnyLength) {
    for (const std::size_t length : {0U, 1U, 254U, 255U, 256U, 257U, 100'000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(formatted("%s", text.c_str()), text) << length;
    }
}

} // namespace
