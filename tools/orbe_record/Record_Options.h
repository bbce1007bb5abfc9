// Program orbe-record. What the user has asked for. Plain data.
#pragma once

#include "Electrode_Map.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace Pelgar::ORBE::recorder {

struct Probe_Options {
    int ap_gain = 500;
    int lfp_gain = 250;
    int reference = 0; // as in Channel_Description
    bool ap_filter = true;
    Electrode_Map electrodes = Electrode_Map::of_bank(0);
    // The folder with a folder a probe; without one the probes stay as they are only when the user says so.
    std::optional<std::filesystem::path> calibration;
    bool may_lack_calibration = false;
};

inline constexpr const char* raw_format = "raw";

struct Record_Options {
    std::filesystem::path folder;                    // absolute
    std::optional<std::filesystem::path> simulation; // the recording to play, absolute
    std::string format;                              // "spikeglx", "open-ephys" or "raw"
    std::optional<double> seconds;                   // none: until the user stops
    Probe_Options probes;
};

} // namespace Pelgar::ORBE::recorder
