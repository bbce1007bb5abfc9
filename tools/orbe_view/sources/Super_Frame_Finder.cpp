#include "sources/Super_Frame_Finder.h"

#include "stream_format/Row_View.h"

#include <algorithm>

namespace Pelgar::ORBE::view {

namespace {

using namespace recording;

constexpr std::size_t counter_lane = word_of_value(counter_high_index) % row_words;
constexpr std::size_t counter_high_row = word_of_value(counter_high_index) / row_words;
constexpr std::size_t counter_low_row = word_of_value(counter_low_index) / row_words;
static_assert(word_of_value(counter_low_index) % row_words == counter_lane);

// So many rows hold whole super frames of every port, also when a few are damaged; a port that has none in
// them is not there.
constexpr std::size_t rows_looked_at = 4096;

// Follows the rows of one port up to the end of its first whole super frame.
class Port_Search {
public:
    bool is_done() const { return m_row == rows_per_super_frame; }

    std::uint32_t frame_counter() const { return (m_high << counter_half_bits) | m_low; }

    void look_at(Row_View row) {
        if (is_done()) {
            return;
        }
        if (row.starts_super_frame()) {
            m_row = 0;
            m_is_inside = true;
            m_begins_with_piece = m_rows_before == 0;
        } else if (!m_is_inside || row.counter() != m_next_counter) {
            m_is_inside = false;
            ++m_rows_before;
            return;
        }
        ++m_rows_before;
        m_next_counter = static_cast<std::uint8_t>(row.counter() + 1);
        const std::uint32_t value = row.word(counter_lane) & sample_mask;
        if (m_row == counter_high_row) {
            m_high = value;
        } else if (m_row == counter_low_row) {
            m_low = value;
        }
        ++m_row;
    }

    bool begins_with_piece() const { return m_begins_with_piece; }

private:
    std::size_t m_rows_before = 0;
    bool m_begins_with_piece = false;
    bool m_is_inside = false;
    std::uint8_t m_next_counter = 0;
    std::size_t m_row = 0;
    std::uint32_t m_high = 0;
    std::uint32_t m_low = 0;
};

} // namespace

Super_Frame_Finder::Places Super_Frame_Finder::find(std::span<const std::uint8_t> piece) {
    std::array<Port_Search, port_count> searches;
    const auto rows = std::min(piece.size(), rows_looked_at * row_bytes);
    for_each_row(piece.first(rows), [&](Row_View row) {
        if (row.stream() < port_count) {
            searches[row.stream()].look_at(row);
        }
    });
    Places places;
    for (std::size_t port = 0; port < port_count; ++port) {
        if (searches[port].is_done()) {
            const std::uint64_t number = m_counters[port].follow(searches[port].frame_counter());
            m_first[port] = m_first[port].value_or(number);
            // A probe that has begun anew counts from 0 again.
            places[port] = {number - std::min(number, *m_first[port]), searches[port].begins_with_piece()};
        }
    }
    return places;
}

} // namespace Pelgar::ORBE::view
