#include "probe_geometry/Probe_Geometry.h"

#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::recorder {

namespace {

constexpr std::size_t electrodes_per_row = 2;

constexpr Probe_Geometry staggered{70.0, {27.0, 59.0}, {11.0, 43.0}, 20.0};
// The short probes for large animals with straight columns at the edges of a wide shank.
constexpr Probe_Geometry straight{125.0, {11.0, 114.0}, {11.0, 114.0}, 20.0};

} // namespace

Probe_Geometry geometry_of(std::string_view part_number) {
    const bool is_straight = part_number == "NP1015" || part_number == "NP1016";
    return is_straight ? straight : staggered;
}

Electrode_Position position_of(const Probe_Geometry& geometry, int electrode) {
    if (electrode < 0 || electrode >= electrode_count) {
        throw std::out_of_range("there is no electrode " + std::to_string(electrode));
    }
    const auto row = static_cast<std::size_t>(electrode) / electrodes_per_row;
    const auto column = static_cast<std::size_t>(electrode) % electrodes_per_row;
    const auto& x = row % 2 == 0 ? geometry.even_row_x : geometry.odd_row_x;
    return {x[column], static_cast<double>(row) * geometry.row_distance};
}

int electrode_or_bank_0(const Probe_Description& probe, std::size_t channel) {
    const int electrode = probe.channels.at(channel).electrode;
    return electrode >= 0 ? electrode : static_cast<int>(channel);
}

std::size_t channel_read(std::size_t converter, std::size_t turn) {
    constexpr std::size_t channels_per_pair = 2 * turn_count;
    return channels_per_pair * (converter / 2) + converter % 2 + 2 * turn;
}

} // namespace Pelgar::ORBE::recorder
