// Test support: runs a function and answers what the process printed meanwhile, from all threads. Log lines
// are kept off standard error, where they would mix with the printed lines.
#pragma once

#include <loguru.hpp>

#include <gtest/gtest.h>

#include <string>

namespace Pelgar::ORBE::test {

struct Captured_Output {
    std::string out;
    std::string err;
};

template <typename Function>
Captured_Output captured_output(Function&& function) {
    loguru::g_stderr_verbosity = loguru::Verbosity_OFF;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    function();
    Captured_Output output;
    output.out = testing::internal::GetCapturedStdout();
    output.err = testing::internal::GetCapturedStderr();
    return output;
}

} // namespace Pelgar::ORBE::test
