// Test support: the names of tests that run for each format.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace Pelgar::ORBE::test {

inline std::string format_test_name(const testing::TestParamInfo<std::string>& info) {
    return info.param == "spikeglx" ? "SpikeGLX" : "OpenEphys";
}

} // namespace Pelgar::ORBE::test
