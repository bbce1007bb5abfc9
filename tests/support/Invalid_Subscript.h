// Test support: the exception that an index out of bounds raises, with its text.
#pragma once

#include <gtest/gtest.h>

#include <stdexcept>

namespace Pelgar::ORBE::test {

template <typename Call>
void expect_invalid_subscript(Call&& call) {
    try {
        call();
        FAIL() << "nothing was thrown";
    } catch (const std::out_of_range& exception) {
        EXPECT_STREQ(exception.what(), "invalid array<T, N> subscript");
    }
}

} // namespace Pelgar::ORBE::test
