// Test support, host mode. A call that an acquisition program does not go on without.
#pragma once

#include <NeuropixAPI.h>

#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::test {

// Throws std::runtime_error with the call's name, its result and what the library says about it.
inline void must(const char* call, Neuropixels::NP_ErrorCode result) {
    if (result != Neuropixels::SUCCESS) {
        char text[256] = "";
        Neuropixels::getLastErrorMessage(text, sizeof text);
        throw std::runtime_error(std::string(call) + " answers " + std::to_string(result) + ", " + text);
    }
}

inline void must(const char* call, bool holds) {
    if (!holds) {
        throw std::runtime_error(std::string(call) + " does not hold");
    }
}

} // namespace Pelgar::ORBE::test

#define HOST_MUST(call) ::Pelgar::ORBE::test::must(#call, call)
