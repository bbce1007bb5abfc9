#include "history/ADC_History.h"

namespace Pelgar::ORBE::view {

void ADC_History::append(std::span<const Row> rows) {
    const std::lock_guard lock(m_mutex);
    for (const Row& row : rows) {
        m_losses.come(row.number);
        m_stream.append(row.number, row.values);
        ++m_samples;
    }
}

void ADC_History::append_lost(std::uint64_t first, std::uint64_t count) {
    const std::lock_guard lock(m_mutex);
    m_losses.lose(first, count);
    m_stream.append_lost(first, count);
}

void ADC_History::clear() {
    const std::lock_guard lock(m_mutex);
    m_stream.clear();
    m_losses.jump();
}

void ADC_History::begin_anew() {
    clear();
    const std::lock_guard lock(m_mutex);
    m_losses.begin_anew();
}

} // namespace Pelgar::ORBE::view
