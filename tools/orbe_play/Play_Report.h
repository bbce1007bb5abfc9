// Program orbe-play. What has come out of playing a recording, as a table for people.
#pragma once

#include "Player.h"

#include <string>

namespace Pelgar::ORBE::recording {

// For a terminal whose lines hold `width` characters.
std::string report(const Player& player, const Play_Options& options, std::size_t width);

} // namespace Pelgar::ORBE::recording
