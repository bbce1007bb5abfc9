#include "history/ADC_History.h"

namespace Pelgar::ORBE::view {

void ADC_History::append(std::span<const Row> rows) {
    const std::lock_guard lock(m_mutex);
    for (const Row& row : rows) {
        if (m_has_next && row.number > m_next) {
            m_lost += row.number - m_next;
        }
        m_has_next = true;
        m_next = row.number + 1;
        m_stream.append(row.number, row.values);
        ++m_samples;
    }
}

void ADC_History::append_lost(std::uint64_t first, std::uint64_t count) {
    const std::lock_guard lock(m_mutex);
    m_lost += count;
    m_has_next = true;
    m_next = first + count;
    m_stream.append_lost(first, count);
}

void ADC_History::clear() {
    const std::lock_guard lock(m_mutex);
    m_stream.clear();
    m_has_next = false;
}

} // namespace Pelgar::ORBE::view
