#include "formats/Stream_Writer.h"

#include <algorithm>
#include <utility>

namespace Pelgar::ORBE::recorder {

Stream_Writer::Stream_Writer(Named_Sink sink, Gap_Table& gaps, std::uint64_t first, std::uint64_t end,
                             std::uint64_t free_head)
    : m_sink(std::move(sink)), m_gaps(gaps), m_first(first), m_end(end), m_free_head(free_head) {}

void Stream_Writer::write(std::uint64_t number, const Sample_Rows& rows) {
    const std::uint64_t begin = std::clamp(number, m_first, m_end);
    const std::uint64_t end = std::clamp(number + rows.count, m_first, m_end);
    if (begin == end) {
        return;
    }
    fill_up_to(begin - m_first);
    const auto left_out = static_cast<std::size_t>(begin - number);
    const auto count = static_cast<std::size_t>(end - begin);
    m_sink.sink->append(
        {rows.values + left_out * rows.row_length, rows.row_length, rows.status + left_out, count});
    m_samples.store(samples() + count, std::memory_order_relaxed);
    m_bytes.store(m_sink.sink->bytes(), std::memory_order_relaxed);
}

void Stream_Writer::fill_up_to(std::uint64_t place) {
    const std::uint64_t next = samples();
    if (place == next) {
        return;
    }
    const std::uint64_t length = place - next;
    if (next != 0 || length > m_free_head) {
        m_gaps.add(m_sink.name, next, length);
        m_lost.store(lost_samples() + length, std::memory_order_relaxed);
    }
    m_sink.sink->skip(length);
    m_samples.store(place, std::memory_order_relaxed);
}

void Stream_Writer::finish() {
    m_sink.sink->finish();
    m_bytes.store(m_sink.sink->bytes(), std::memory_order_relaxed);
}

} // namespace Pelgar::ORBE::recorder
