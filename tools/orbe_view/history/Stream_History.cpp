#include "history/Stream_History.h"

#include <algorithm>
#include <array>

namespace Pelgar::ORBE::view {

// The extents of neighbouring values, which lie side by side in each row and each bin.
class Lane_Extents {
public:
    static constexpr std::size_t most = 128;

    explicit Lane_Extents(std::size_t count) : m_count(count) {
        std::fill_n(m_lows.begin(), count, Extent().low);
        std::fill_n(m_highs.begin(), count, Extent().high);
    }

    void include(const std::int16_t* lows, const std::int16_t* highs) {
        // Each loop by itself, and without a reference to what may change: so they use the vector unit.
        for (std::size_t lane = 0; lane < m_count; ++lane) {
            const std::int16_t low = lows[lane];
            m_lows[lane] = low < m_lows[lane] ? low : m_lows[lane];
        }
        for (std::size_t lane = 0; lane < m_count; ++lane) {
            const std::int16_t high = highs[lane];
            m_highs[lane] = high > m_highs[lane] ? high : m_highs[lane];
        }
    }

    void store(Extent* destination) const {
        for (std::size_t lane = 0; lane < m_count; ++lane) {
            destination[lane] = {m_lows[lane], m_highs[lane]};
        }
    }

private:
    std::size_t m_count;
    std::array<std::int16_t, most> m_lows;
    std::array<std::int16_t, most> m_highs;
};

Stream_History::Stream_History(const History_Size& size)
    : m_size(size), m_rows(size.rows * size.width), m_row_is_there(size.rows), m_lows(size.bins * size.width),
      m_highs(size.bins * size.width), m_lost(size.bins) {}

void Stream_History::clear() {
    m_is_empty = true;
    m_begin = 0;
    m_end = 0;
}

void Stream_History::append(std::uint64_t number, std::span<const std::int16_t> values) {
    go_to(number);
    if (number % m_size.rows_per_bin == 0) {
        begin_bin(number / m_size.rows_per_bin);
    }
    const std::size_t row = number % m_size.rows;
    std::copy_n(values.begin(), m_size.width,
                m_rows.begin() + static_cast<std::ptrdiff_t>(row * m_size.width));
    m_row_is_there[row] = 1;
    const std::size_t bin = number / m_size.rows_per_bin % m_size.bins;
    std::int16_t* const lows = m_lows.data() + bin * m_size.width;
    std::int16_t* const highs = m_highs.data() + bin * m_size.width;
    const std::int16_t* const samples = values.data();
    for (std::size_t value = 0; value < m_size.width; ++value) {
        lows[value] = std::min(lows[value], samples[value]);
        highs[value] = std::max(highs[value], samples[value]);
    }
    m_end = number + 1;
    forget();
}

void Stream_History::append_lost(std::uint64_t number, std::uint64_t count) {
    if (count == 0) {
        return;
    }
    go_to(number);
    for (const std::uint64_t end = number + count; number < end; ++number) {
        lose(number);
    }
    forget();
}

// Up to this row what has not come is lost. Behind what is remembered, or before it, everything begins anew.
void Stream_History::go_to(std::uint64_t number) {
    if (m_is_empty || number < m_end || number - m_end >= remembered_rows()) {
        clear();
        m_is_empty = false;
        m_begin = number;
        m_end = number;
        begin_bin(number / m_size.rows_per_bin);
    }
    while (m_end < number) {
        lose(m_end);
    }
}

void Stream_History::forget() {
    if (m_end - m_begin > remembered_rows()) {
        m_begin = m_end - remembered_rows();
    }
}

void Stream_History::lose(std::uint64_t number) {
    if (number % m_size.rows_per_bin == 0) {
        begin_bin(number / m_size.rows_per_bin);
    }
    m_row_is_there[number % m_size.rows] = 0;
    ++m_lost[number / m_size.rows_per_bin % m_size.bins];
    m_end = number + 1;
}

void Stream_History::begin_bin(std::uint64_t bin) {
    const std::size_t place = bin % m_size.bins;
    const auto begin = static_cast<std::ptrdiff_t>(place * m_size.width);
    std::fill_n(m_lows.begin() + begin, m_size.width, Extent().low);
    std::fill_n(m_highs.begin() + begin, m_size.width, Extent().high);
    m_lost[place] = 0;
}

std::uint64_t Stream_History::first_whole_row() const {
    return std::max(m_begin, m_end - std::min<std::uint64_t>(m_end, m_size.rows));
}

bool Stream_History::has_row(std::uint64_t number) const {
    return number >= first_whole_row() && number < m_end && m_row_is_there[number % m_size.rows] != 0;
}

void Stream_History::extents(const Columns& columns, std::size_t first, std::size_t count,
                             std::span<Extent> destination) const {
    for (std::size_t lane = 0; lane < count; lane += Lane_Extents::most) {
        const std::size_t lane_count = std::min(count - lane, Lane_Extents::most);
        for (std::size_t column = 0; column < columns.count; ++column) {
            const std::uint64_t begin = columns.begin + column * columns.step;
            Lane_Extents lanes(lane_count);
            include(begin, begin + columns.step, first + lane, lanes);
            lanes.store(destination.data() + column * count + lane);
        }
    }
}

void Stream_History::include(std::uint64_t begin, std::uint64_t end, std::size_t first,
                             Lane_Extents& lanes) const {
    begin = std::max(begin, m_begin);
    end = std::min(end, m_end);
    if (m_is_empty || begin >= end) {
        return;
    }
    const std::uint64_t bin_rows = m_size.rows_per_bin;
    if (begin >= first_whole_row() && end - begin < bin_rows) {
        std::size_t place = begin % m_size.rows;
        for (std::uint64_t row = begin; row < end; ++row) {
            if (m_row_is_there[place] != 0) {
                const std::int16_t* const samples = m_rows.data() + place * m_size.width + first;
                lanes.include(samples, samples);
            }
            place = place + 1 == m_size.rows ? 0 : place + 1;
        }
        return;
    }
    for (std::uint64_t bin = begin / bin_rows; bin * bin_rows < end; ++bin) {
        const std::size_t place = bin % m_size.bins * m_size.width + first;
        lanes.include(m_lows.data() + place, m_highs.data() + place);
    }
}

void Stream_History::lost(const Columns& columns, std::span<std::uint32_t> destination) const {
    const std::uint64_t bin_rows = m_size.rows_per_bin;
    for (std::size_t column = 0; column < columns.count; ++column) {
        const std::uint64_t begin = std::max(columns.begin + column * columns.step, m_begin);
        const std::uint64_t end = std::min(columns.begin + (column + 1) * columns.step, m_end);
        std::uint32_t lost = 0;
        if (columns.step < bin_rows && begin >= first_whole_row()) {
            for (std::uint64_t row = begin; row < end; ++row) {
                lost += has_row(row) ? 0U : 1U;
            }
        } else if (columns.step < bin_rows) {
            for (std::uint64_t row = begin; row < end;) {
                const std::uint64_t bin = row / bin_rows;
                const std::uint64_t next = std::min((bin + 1) * bin_rows, end);
                lost += static_cast<std::uint32_t>(((next - row) * m_lost[bin % m_size.bins] + bin_rows - 1) /
                                                   bin_rows);
                row = next;
            }
        } else {
            for (std::uint64_t bin = begin / bin_rows; bin * bin_rows < end; ++bin) {
                lost += m_lost[bin % m_size.bins];
            }
        }
        destination[column] = m_is_empty ? 0U : lost;
    }
}

std::size_t Stream_History::latest(std::size_t value, std::uint64_t end,
                                   std::span<std::int16_t> destination) const {
    if (m_is_empty) {
        return 0;
    }
    end = std::min(end, m_end);
    std::size_t count = 0;
    while (count < destination.size() && end > count && has_row(end - count - 1)) {
        ++count;
    }
    for (std::size_t place = 0; place < count; ++place) {
        destination[place] = m_rows[(end - count + place) % m_size.rows * m_size.width + value];
    }
    return count;
}

} // namespace Pelgar::ORBE::view
