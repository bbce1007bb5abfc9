#include "folders/Gap_List.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Pelgar::ORBE::view {

Gap_List::Gap_List(std::vector<Sample_Range> gaps) {
    std::sort(gaps.begin(), gaps.end(),
              [](const Sample_Range& left, const Sample_Range& right) { return left.begin < right.begin; });
    for (const Sample_Range& gap : gaps) {
        if (gap.begin >= gap.end) {
            continue;
        }
        if (!m_gaps.empty() && gap.begin <= m_gaps.back().end) {
            m_gaps.back().end = std::max(m_gaps.back().end, gap.end);
        } else {
            m_gaps.push_back(gap);
        }
    }
    std::uint64_t before = 0;
    for (const Sample_Range& gap : m_gaps) {
        m_before.push_back(before);
        before += gap.end - gap.begin;
    }
}

std::uint64_t Gap_List::lost_in(const Sample_Range& range) const {
    return range.begin < range.end ? lost_before(range.end) - lost_before(range.begin) : 0;
}

std::uint64_t Gap_List::lost_before(std::uint64_t sample) const {
    const auto behind = std::partition_point(
        m_gaps.begin(), m_gaps.end(), [sample](const Sample_Range& gap) { return gap.begin < sample; });
    if (behind == m_gaps.begin()) {
        return 0;
    }
    const auto last = static_cast<std::size_t>(behind - m_gaps.begin()) - 1;
    return m_before[last] + std::min(sample, m_gaps[last].end) - m_gaps[last].begin;
}

Gap_List::Stretch Gap_List::stretch_at(std::uint64_t sample) const {
    const auto gap = std::partition_point(m_gaps.begin(), m_gaps.end(),
                                          [sample](const Sample_Range& each) { return each.end <= sample; });
    if (gap == m_gaps.end()) {
        return {std::numeric_limits<std::uint64_t>::max(), false};
    }
    return gap->begin <= sample ? Stretch{gap->end, true} : Stretch{gap->begin, false};
}

} // namespace Pelgar::ORBE::view
