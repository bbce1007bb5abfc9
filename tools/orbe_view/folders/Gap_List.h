// Program orbe-view, folders. Which samples of a stream are lost. A copy shares what lies far behind, so that
// it costs little however long the list is. Whoever holds it sees to it that nobody changes it meanwhile;
// nothing blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
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

    // As above, but that it must not begin before the last one: then it answers false and does nothing.
    bool add(const Sample_Range& gap);

    std::vector<Sample_Range> all() const;

    // How many samples of the range are lost.
    std::uint64_t lost_in(const Sample_Range& range) const;

    struct Stretch {
        std::uint64_t end;
        bool is_lost;
    };

    // From the sample on, up to where it changes whether they are lost.
    Stretch stretch_at(std::uint64_t sample) const;

private:
    // Of gaps that follow each other.
    struct Block {
        static constexpr std::size_t most = 1024;

        std::vector<Sample_Range> gaps;
        std::vector<std::uint64_t> before; // lost samples before each of them
    };

    std::uint64_t lost_before(std::uint64_t sample) const;
    const Block& block_with(std::uint64_t sample) const;

    std::vector<std::shared_ptr<const Block>> m_full; // do not change any more
    Block m_last;                                     // not empty when there is any gap
};

} // namespace Pelgar::ORBE::view
