// Program orbe-view, folders. Which samples of a stream are lost. Whoever holds it sees to it that nobody
// changes it meanwhile; nothing blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Pelgar::ORBE::view {

// Samples `begin` to `end` - 1.
struct Sample_Range {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;

    bool operator==(const Sample_Range&) const = default;
};

class Gap_List {
public:
    Gap_List() = default;
    // In any order; those that touch or overlap become one.
    explicit Gap_List(std::vector<Sample_Range> gaps);

    // How many samples of the range are lost.
    std::uint64_t lost_in(const Sample_Range& range) const;

    struct Stretch {
        std::uint64_t end;
        bool is_lost;
    };

    // From the sample on, up to where it changes whether they are lost.
    Stretch stretch_at(std::uint64_t sample) const;

private:
    std::uint64_t lost_before(std::uint64_t sample) const;

    std::vector<Sample_Range> m_gaps;
    std::vector<std::uint64_t> m_before; // lost samples before each of them
};

} // namespace Pelgar::ORBE::view
