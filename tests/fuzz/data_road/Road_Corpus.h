// Fuzzing: the first inputs of the data road.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Pelgar::ORBE::test {

std::vector<std::pair<std::string, std::vector<std::uint8_t>>> road_corpus();

} // namespace Pelgar::ORBE::test
