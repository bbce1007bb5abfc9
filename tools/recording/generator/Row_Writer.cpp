#include "generator/Row_Writer.h"

#include <algorithm>
#include <utility>

namespace Pelgar::ORBE::recording {

namespace {

constexpr std::uint8_t wrong_marker = 0x50;
// Turns the tags 1 to 7 into 9 to 15, which no lane has.
constexpr std::uint16_t tag_damage = 0x8000;

} // namespace

Row_Writer::Row_Writer(Fault_Plan plan, std::size_t reserved_bytes)
    : m_plan(std::move(plan)), m_bytes(reserved_bytes) {}

void Row_Writer::cut_frame(std::vector<std::uint16_t>& words, std::size_t frame_begin) {
    if (!m_plan.empty() && m_plan.strikes(Fault_Kind::cut_frame, rhd_stream)) {
        const std::size_t frame_words = words.size() - frame_begin;
        words.resize(frame_begin + 1 + m_plan.random() % (frame_words - 1));
    }
}

void Row_Writer::write_damaged(unsigned stream, const std::uint16_t* words) {
    std::array<std::uint16_t, row_words> damaged;
    std::copy_n(words, row_words, damaged.begin());
    if (stream < port_count) {
        const bool flagged = (damaged[0] & super_frame_flag) != 0;
        if (flagged && m_plan.strikes(Fault_Kind::missing_flag, stream)) {
            damaged[0] = static_cast<std::uint16_t>(damaged[0] ^ super_frame_flag);
        }
        if (m_plan.strikes(Fault_Kind::wrong_tag, stream)) {
            damaged[m_plan.random() % row_words] ^= tag_damage;
        }
    }
    if (m_plan.strikes(Fault_Kind::unknown_row, stream)) {
        write_unknown_row();
    }
    const std::uint8_t marker = m_plan.strikes(Fault_Kind::bad_marker, stream) ? wrong_marker : row_marker;
    const std::uint8_t counter = m_counters[stream]++;
    if (!m_plan.strikes(Fault_Kind::lost_row, stream)) {
        append(stream, counter, marker, damaged.data());
    }
}

void Row_Writer::write_unknown_row() {
    const std::uint64_t random = m_plan.random();
    const auto stream =
        first_unknown_stream + static_cast<unsigned>(random % (stream_count - first_unknown_stream));
    std::array<std::uint16_t, row_words> words;
    words.fill(static_cast<std::uint16_t>(random >> 48));
    append(stream, m_counters[stream]++, row_marker, words.data());
}

void Row_Writer::resize(std::size_t size) {
    if (size > m_bytes.size()) {
        m_bytes.resize(size);
    }
    if (size > m_size) {
        std::fill(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_size),
                  m_bytes.begin() + static_cast<std::ptrdiff_t>(size), std::uint8_t{0});
    }
    m_size = size;
}

void Row_Writer::grow() {
    m_bytes.resize(std::max(2 * m_bytes.size(), m_size + row_bytes));
}

} // namespace Pelgar::ORBE::recording
