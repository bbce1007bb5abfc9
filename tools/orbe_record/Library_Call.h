// Program orbe-record. Turns the results of the library's functions into exceptions with the library's own
// reason. Any thread.
#pragma once

#include <NeuropixAPI.h>

#include <array>
#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::recorder {

inline void must_succeed(Neuropixels::NP_ErrorCode result, const std::string& what) {
    if (result == Neuropixels::SUCCESS) {
        return;
    }
    std::array<char, 1024> reason{};
    Neuropixels::getLastErrorMessage(reason.data(), reason.size());
    throw std::runtime_error(what + " (" + std::to_string(result) +
                             (reason[0] == '\0' ? std::string() : std::string(", ") + reason.data()) + ")");
}

} // namespace Pelgar::ORBE::recorder
