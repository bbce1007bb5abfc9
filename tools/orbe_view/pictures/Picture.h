// Program orbe-view, pictures. A picture on its way to a page: a length of 32 bits, JSON of that length,
// which says what follows, and the numbers that it names, as floats of 32 bits. All low byte first. Plain
// data.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace Pelgar::ORBE::view {

using Picture = std::vector<std::uint8_t>;
using Shared_Picture = std::shared_ptr<const Picture>;

} // namespace Pelgar::ORBE::view
