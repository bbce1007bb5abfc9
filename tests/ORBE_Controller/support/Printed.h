// Test support: what a call prints, and what it throws.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

namespace Pelgar::ORBE::test {

struct Printed {
    std::string out;
    std::string err;
};

// What the process prints to standard output and standard error while the call runs.
template <typename Call>
Printed printed_by(Call&& call) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    call();
    std::string err = testing::internal::GetCapturedStderr();
    return {testing::internal::GetCapturedStdout(), std::move(err)};
}

// How often a text holds a part.
inline std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

// The text of the exception that the call throws.
template <typename Exception, typename Call>
std::string text_thrown_by(Call&& call) {
    try {
        call();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "nothing was thrown";
}

} // namespace Pelgar::ORBE::test
