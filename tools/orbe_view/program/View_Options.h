// Program orbe-view. What the user has asked for. Plain data.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace Pelgar::ORBE::view {

struct View_Options {
    std::optional<std::filesystem::path>
        recording; // a raw recording, or a recorded folder; absolute; none: a box
    std::optional<std::filesystem::path> simulation;  // the recording that plays a box; absolute
    std::optional<std::filesystem::path> calibration; // absolute
    std::optional<std::string> listen;                // an address; without it only this machine's own
    unsigned short port = 0;
    bool may_control = false;
    double spike_microvolts = 100.0;
};

} // namespace Pelgar::ORBE::view
