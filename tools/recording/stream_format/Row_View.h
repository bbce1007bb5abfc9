// Tools, recording library. The rows of a piece of the stream, as the demultiplexer takes them: up to the
// first row whose marker is wrong. No state; any thread.
#pragma once

#include "stream_format/Wire_Format.h"

#include <cstdint>
#include <cstring>
#include <span>

namespace Pelgar::ORBE::recording {

// One row; points into the piece.
class Row_View {
public:
    explicit Row_View(const std::uint8_t* bytes) : m_bytes(bytes) {}

    bool has_marker() const { return (m_bytes[0] & row_marker_mask) == row_marker; }

    unsigned stream() const { return m_bytes[0] & row_stream_mask; }

    std::uint8_t counter() const { return m_bytes[1]; }

    std::uint16_t word(std::size_t index) const {
        std::uint16_t word = 0;
        std::memcpy(&word, payload() + index * sizeof(word), sizeof(word));
        return word;
    }

    // The seven words, in bytes.
    const std::uint8_t* payload() const { return m_bytes + row_header_bytes; }

    bool starts_super_frame() const { return (word(0) & super_frame_flag) != 0; }

private:
    const std::uint8_t* m_bytes;
};

// Calls `take(Row_View)` for each row that counts and answers how many rows of the piece were given up.
template <typename Take>
std::size_t for_each_row(std::span<const std::uint8_t> piece, Take&& take) {
    const std::size_t rows = piece.size() / row_bytes;
    for (std::size_t i = 0; i < rows; ++i) {
        const Row_View row(piece.data() + i * row_bytes);
        if (!row.has_marker()) {
            return rows - i;
        }
        take(row);
    }
    return 0;
}

} // namespace Pelgar::ORBE::recording
