// Program orbe-view, history. The lowest and the highest of some samples. Plain data.
#pragma once

#include <cstdint>
#include <limits>

namespace Pelgar::ORBE::view {

// Of no sample as long as the lowest is above the highest.
struct Extent {
    std::int16_t low = std::numeric_limits<std::int16_t>::max();
    std::int16_t high = std::numeric_limits<std::int16_t>::min();

    bool is_empty() const { return low > high; }

    bool operator==(const Extent&) const = default;
};

} // namespace Pelgar::ORBE::view
