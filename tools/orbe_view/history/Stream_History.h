// Program orbe-view, history. The last rows of one stream, whole, and for longer the extents of bins of
// them. Whoever holds it sees to it that one thread at a time uses it; nothing blocks, and nothing is
// allocated after the constructor.
#pragma once

#include "history/Columns.h"
#include "history/Extent.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Pelgar::ORBE::view {

struct History_Size {
    std::size_t width;        // values a row
    std::size_t rows;         // that are kept whole
    std::size_t rows_per_bin; // bins begin at its multiples
    std::size_t bins;         // that are kept
};

class Lane_Extents;

class Stream_History {
public:
    explicit Stream_History(const History_Size& size);

    // Row number `number`, which is later than all before; those left out are lost.
    void append(std::uint64_t number, std::span<const std::int16_t> values);

    // So many rows from `number` on are lost; as above.
    void append_lost(std::uint64_t number, std::uint64_t count);

    // Nothing was there. The next row begins anew wherever it likes.
    void clear();

    // Rows `begin()` to `end()` - 1 are known, as bins at least.
    std::uint64_t begin() const { return m_begin; }

    std::uint64_t end() const { return m_end; }

    std::size_t rows_per_bin() const { return m_size.rows_per_bin; }

    // Of `count` values of the rows from `first` on: for each column those of all these values. Columns
    // narrower than a bin are made from the whole rows where these are still there.
    void extents(const Columns& columns, std::size_t first, std::size_t count,
                 std::span<Extent> destination) const;

    // How many rows of each column are lost. Of one that is narrower than a bin and no more whole its share
    // of those of the bin, rounded up.
    void lost(const Columns& columns, std::span<std::uint32_t> destination) const;

    // The last rows of one value, oldest first, as many as there are without a loss between them, up to the
    // destination's length; answers their number.
    std::size_t latest(std::size_t value, std::uint64_t end, std::span<std::int16_t> destination) const;

private:
    std::uint64_t remembered_rows() const { return (m_size.bins - 1) * m_size.rows_per_bin; }

    bool has_row(std::uint64_t number) const;
    void begin_bin(std::uint64_t bin);
    void go_to(std::uint64_t number);
    void forget();
    void lose(std::uint64_t number);
    void include(std::uint64_t begin, std::uint64_t end, std::size_t first, Lane_Extents& lanes) const;
    std::uint64_t first_whole_row() const;

    History_Size m_size;
    std::uint64_t m_begin = 0;
    std::uint64_t m_end = 0;
    bool m_is_empty = true;
    std::vector<std::int16_t> m_rows;
    std::vector<std::uint8_t> m_row_is_there;
    std::vector<std::int16_t> m_lows;
    std::vector<std::int16_t> m_highs;
    std::vector<std::uint32_t> m_lost;
};

} // namespace Pelgar::ORBE::view
