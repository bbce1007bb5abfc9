#include "history/Loss_Count.h"

#include <algorithm>
#include <iterator>

namespace Pelgar::ORBE::view {

std::uint64_t Loss_Count::come(std::uint64_t number) {
    begin_with(number);
    const std::uint64_t lost = number > m_next ? number - m_next : 0;
    if (lost != 0) {
        count(m_next, number);
    }
    m_next = number + 1;
    return lost;
}

void Loss_Count::lose(std::uint64_t first, std::uint64_t count_lost) {
    begin_with(first);
    count(first, first + count_lost);
    m_next = first + count_lost;
}

void Loss_Count::begin_with(std::uint64_t number) {
    if (!m_has_begun) {
        m_has_begun = true;
        m_begin = number;
        m_next = number;
    }
}

void Loss_Count::count(std::uint64_t begin, std::uint64_t end) {
    m_passed += end - begin;
    m_different += end - begin;
    auto stretch = m_before.upper_bound(begin);
    if (stretch != m_before.begin()) {
        --stretch;
    }
    for (; stretch != m_before.end() && stretch->first < end; ++stretch) {
        const std::uint64_t known_begin = std::max(begin, stretch->first);
        const std::uint64_t known_end = std::min(end, stretch->second);
        m_different -= known_end > known_begin ? known_end - known_begin : 0;
    }
}

// Stretches that touch or overlap become one.
void Loss_Count::jump() {
    if (!m_has_begun) {
        return;
    }
    m_has_begun = false;
    std::uint64_t begin = m_begin;
    std::uint64_t end = m_next;
    auto stretch = m_before.upper_bound(begin);
    if (stretch != m_before.begin() && std::prev(stretch)->second >= begin) {
        --stretch;
        begin = stretch->first;
    }
    while (stretch != m_before.end() && stretch->first <= end) {
        end = std::max(end, stretch->second);
        stretch = m_before.erase(stretch);
    }
    m_before.emplace(begin, end);
}

void Loss_Count::begin_anew() {
    m_has_begun = false;
    m_before.clear();
}

} // namespace Pelgar::ORBE::view
