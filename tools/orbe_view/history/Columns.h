// Program orbe-view, history. How the time that a picture shows is cut into its columns. Plain data; any
// thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Pelgar::ORBE::view {

struct Columns {
    std::uint64_t begin = 0; // the first sample of the first column
    std::uint64_t step = 1;  // samples a column
    std::size_t count = 0;

    std::uint64_t end() const { return begin + step * count; }

    // So many of them from one on.
    Columns part(std::size_t first, std::size_t length) const { return {begin + step * first, step, length}; }

    // At most `most` columns for the `length` samples before `end`. They begin at multiples of their step, so
    // that a picture that scrolls shows the same columns again and does not shimmer; a step of a bin or more
    // is whole bins.
    static Columns ending_at(std::uint64_t end, std::uint64_t length, std::size_t most, std::uint64_t bin) {
        Columns columns;
        most = std::max<std::size_t>(most, 1);
        columns.step = std::max<std::uint64_t>((length + most - 1) / most, 1);
        if (columns.step >= bin) {
            columns.step = (columns.step + bin - 1) / bin * bin;
        }
        const std::uint64_t last = (end + columns.step - 1) / columns.step;
        const std::uint64_t wanted = std::max<std::uint64_t>(length / columns.step, 1);
        columns.count = static_cast<std::size_t>(std::min(last, wanted));
        columns.begin = (last - columns.count) * columns.step;
        return columns;
    }
};

} // namespace Pelgar::ORBE::view
