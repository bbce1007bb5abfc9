#include "expectation/Block_Gatherer.h"

#include "stream_format/Row_View.h"

namespace Pelgar::ORBE::recording {

static_assert(piece_bytes / row_bytes < rows_per_block);

Block_Gatherer::Block_Gatherer(unsigned port)
    : m_port(port), m_filling(words_per_block), m_complete(words_per_block) {}

bool Block_Gatherer::feed(std::span<const std::uint8_t> piece) {
    bool completed = false;
    for_each_row(piece, [&](Row_View row) {
        if (row.stream() != m_port) {
            return;
        }
        if (m_fill == words_per_block) {
            m_filling.swap(m_complete);
            m_fill = 0;
            completed = true;
        }
        if (m_fill != 0 || row.starts_super_frame()) {
            std::memcpy(m_filling.data() + m_fill, row.payload(), row_payload_bytes);
            m_fill += row_words;
        }
    });
    return completed;
}

} // namespace Pelgar::ORBE::recording
