#include "folders/Gap_List.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Pelgar::ORBE::view {

Gap_List::Gap_List(std::vector<Sample_Range> gaps) {
    std::sort(gaps.begin(), gaps.end(),
              [](const Sample_Range& left, const Sample_Range& right) { return left.begin < right.begin; });
    for (const Sample_Range& gap : gaps) {
        add(gap);
    }
}

bool Gap_List::add(const Sample_Range& gap) {
    if (gap.begin >= gap.end) {
        return true;
    }
    std::uint64_t before = 0;
    if (!m_last.gaps.empty()) {
        Sample_Range& last = m_last.gaps.back();
        if (gap.begin < last.begin) {
            return false;
        }
        if (gap.begin <= last.end) {
            last.end = std::max(last.end, gap.end);
            return true;
        }
        before = m_last.before.back() + last.end - last.begin;
    }
    if (m_last.gaps.size() == Block::most) {
        m_full.push_back(std::make_shared<const Block>(std::exchange(m_last, {})));
    }
    m_last.gaps.push_back(gap);
    m_last.before.push_back(before);
    return true;
}

std::vector<Sample_Range> Gap_List::all() const {
    std::vector<Sample_Range> gaps;
    for (const auto& block : m_full) {
        gaps.insert(gaps.end(), block->gaps.begin(), block->gaps.end());
    }
    gaps.insert(gaps.end(), m_last.gaps.begin(), m_last.gaps.end());
    return gaps;
}

std::uint64_t Gap_List::lost_in(const Sample_Range& range) const {
    return range.begin < range.end ? lost_before(range.end) - lost_before(range.begin) : 0;
}

// The first one that has a gap that ends behind the sample; the last one when there is none.
const Gap_List::Block& Gap_List::block_with(std::uint64_t sample) const {
    const auto block = std::partition_point(
        m_full.begin(), m_full.end(), [sample](const auto& each) { return each->gaps.back().end <= sample; });
    return block == m_full.end() ? m_last : **block;
}

std::uint64_t Gap_List::lost_before(std::uint64_t sample) const {
    const Block& block = block_with(sample);
    if (block.gaps.empty()) {
        return 0;
    }
    const auto behind =
        std::partition_point(block.gaps.begin(), block.gaps.end(),
                             [sample](const Sample_Range& gap) { return gap.begin < sample; });
    if (behind == block.gaps.begin()) {
        return block.before.front();
    }
    const auto last = static_cast<std::size_t>(behind - block.gaps.begin()) - 1;
    return block.before[last] + std::min(sample, block.gaps[last].end) - block.gaps[last].begin;
}

Gap_List::Stretch Gap_List::stretch_at(std::uint64_t sample) const {
    const Block& block = block_with(sample);
    const auto gap = std::partition_point(block.gaps.begin(), block.gaps.end(),
                                          [sample](const Sample_Range& each) { return each.end <= sample; });
    if (gap == block.gaps.end()) {
        return {std::numeric_limits<std::uint64_t>::max(), false};
    }
    return gap->begin <= sample ? Stretch{gap->end, true} : Stretch{gap->begin, false};
}

} // namespace Pelgar::ORBE::view
