// Tools, recording library. Puts rows of words into the stream as the box does: marker, stream id, row
// counter of the stream; and damages them where the fault plan says so. Runs on the generator's thread.
#pragma once

#include "faults/Fault_Plan.h"
#include "stream_format/Wire_Format.h"

#include <array>
#include <cstring>
#include <span>
#include <vector>

namespace Pelgar::ORBE::recording {

class Row_Writer {
public:
    // The buffer grows when more than `reserved_bytes` are written between two calls of `clear`.
    Row_Writer(Fault_Plan plan, std::size_t reserved_bytes);

    // Appends one row of the stream; `words` are the seven words of its payload.
    void write(unsigned stream, const std::uint16_t* words) {
        if (m_plan.empty()) {
            append(stream, m_counters[stream]++, row_marker, words);
        } else {
            write_damaged(stream, words);
        }
    }

    // Ends the RHD frame that begins at `frame_begin`, the last in `words`, early where the plan says so.
    void cut_frame(std::vector<std::uint16_t>& words, std::size_t frame_begin);

    // The rows since the last `clear`.
    std::span<const std::uint8_t> bytes() const { return {m_bytes.data(), m_size}; }

    void clear() { m_size = 0; }

    // Drops bytes from the end, or appends zero bytes, so that `size` are left.
    void resize(std::size_t size);

private:
    void append(unsigned stream, std::uint8_t counter, std::uint8_t marker, const std::uint16_t* words) {
        if (m_size + row_bytes > m_bytes.size()) {
            grow();
        }
        std::uint8_t* const row = m_bytes.data() + m_size;
        row[0] = static_cast<std::uint8_t>(marker | stream);
        row[1] = counter;
        std::memcpy(row + row_header_bytes, words, row_payload_bytes);
        m_size += row_bytes;
    }

    void write_damaged(unsigned stream, const std::uint16_t* words);
    void write_unknown_row();
    void grow();

    Fault_Plan m_plan;
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_size = 0;
    std::array<std::uint8_t, stream_count> m_counters{};
};

} // namespace Pelgar::ORBE::recording
