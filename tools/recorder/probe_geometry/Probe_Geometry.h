// Tools, recorder. Where a probe's electrodes lie on its shank, and in which order its converters read the
// channels. Any thread; nothing blocks.
#pragma once

#include "description/Recording_Description.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace Pelgar::ORBE::recorder {

inline constexpr int electrode_count = 960;

struct Electrode_Position {
    double x = 0.0; // um from the left edge of the shank
    double y = 0.0; // um from the row nearest to the tip

    bool operator==(const Electrode_Position&) const = default;
};

struct Probe_Geometry {
    double shank_width; // um
    // Of the two electrodes of even rows, and of odd ones.
    std::array<double, 2> even_row_x;
    std::array<double, 2> odd_row_x;
    double row_distance;
};

// By the part number; one that is not known has the staggered rows that nearly all probes of this kind have.
Probe_Geometry geometry_of(std::string_view part_number);

// Electrode 0 to 959; another one throws std::out_of_range.
Electrode_Position position_of(const Probe_Geometry& geometry, int electrode);

// A channel that is connected to nothing lies where its electrode of bank 0 would.
int electrode_or_bank_0(const Probe_Description& probe, std::size_t channel);

// The probe's 32 converters take turns on 12 channels each; they read channel `channel_read` at the same
// time.
inline constexpr std::size_t converter_count = 32;
inline constexpr std::size_t turn_count = 12;
std::size_t channel_read(std::size_t converter, std::size_t turn);

} // namespace Pelgar::ORBE::recorder
