#include "rows/Row_Splitter.h"

#include "common/Checked_Index.h"
#include "common/Console.h"
#include "rows/High_Water_Mark.h"
#include "wire/Stream_Anomalies.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace Pelgar::ORBE::demux {

namespace {

// Over all demultiplexers of the process.
std::array<High_Water_Mark, np_port_count> np_queue_high_water_mark;

constexpr std::uint32_t all_streams = (std::uint32_t{1} << mux_row::stream_id_count) - 1;

// The counter before the first row, so that every stream begins at 0.
constexpr std::uint8_t counter_before_first_row = 0xFF;

static_assert(mux_row::marker_offset == 0 && mux_row::counter_offset == 1,
              "marker, stream id and counter make one word, the counter in its upper half");
constexpr unsigned counter_shift = 8;
constexpr std::uint16_t counter_step = 1U << counter_shift;

std::uint16_t header_of(const std::uint8_t* row) {
    std::uint16_t header;
    std::memcpy(&header, row, sizeof header);
    return header;
}

std::uint16_t header_after(unsigned stream, std::uint8_t last_counter) {
    const unsigned counter = static_cast<std::uint8_t>(last_counter + 1);
    return static_cast<std::uint16_t>(counter << counter_shift | mux_row::marker | stream);
}

// Fourteen bytes, as two words of eight that overlap.
void copy_payload(std::uint8_t* place, const std::uint8_t* row) {
    constexpr std::size_t second = mux_row::payload_length - sizeof(std::uint64_t);
    std::uint64_t words[2];
    std::memcpy(&words[0], row + mux_row::payload_offset, sizeof words[0]);
    std::memcpy(&words[1], row + mux_row::payload_offset + second, sizeof words[1]);
    std::memcpy(place, &words[0], sizeof words[0]);
    std::memcpy(place + second, &words[1], sizeof words[1]);
}

} // namespace

Row_Splitter::Row_Splitter(NP_Workers& np_workers, C_RHD_Worker_Thread& rhd_worker)
    : m_np_workers(np_workers), m_rhd_worker(rhd_worker) {
    // What is in a block is read up to its fill alone.
    for (auto& block : m_np_blocks) {
        block = std::make_unique_for_overwrite<NP_Block_Buffer>();
        block->fill = 0;
        block->lost_before = 0;
    }
    m_last_row_counter.fill(counter_before_first_row);
    for (unsigned port = 0; port < np_port_count; ++port) {
        m_np_losses[port].emplace("Queue of NP worker " + std::to_string(port), "super frames");
    }
}

void Row_Splitter::set_block_length(std::uint32_t super_frames) {
    constexpr std::size_t most = np_block_super_frame_count;
    m_block_length = std::clamp<std::size_t>(super_frames, 1, most) * psb::bytes_per_super_frame;
}

// Most rows are as expected: they bear the marker and the next counter of their stream, and there is room for
// them. Such rows are taken in turns, everything else row by row.
void Row_Splitter::split(const std::uint8_t* rows, std::size_t row_count) {
    m_rhd_rows_placed = 0;
    const std::uint8_t* const end = rows + row_count * mux_row::length;
    while (rows != end) {
        const auto left = static_cast<std::size_t>(end - rows) / mux_row::length;
        std::size_t taken = take_turns(rows, left);
        if (taken == 0) {
            if (!take_row(rows)) {
                break;
            }
            taken = 1;
        }
        m_total_row_index += static_cast<std::uint32_t>(taken);
        rows += taken * mux_row::length;
    }
    hand_over_rhd_words();
}

// Takes rows from the front as long as they are as expected, and answers how many.
std::size_t Row_Splitter::take_turns(const std::uint8_t* rows, std::size_t row_count) {
    const Turn turn = find_turn(rows, row_count);
    switch (turn.length) {
    case 1:
        return copy_turns<1>(rows, turn);
    case 2:
        return copy_turns<2>(rows, turn);
    case 3:
        return copy_turns<3>(rows, turn);
    case 4:
        return copy_turns<4>(rows, turn);
    case 5:
        return copy_turns<5>(rows, turn);
    default:
        return 0;
    }
}

// No stream stands in a turn twice: each has one place where its rows go, and one counter that is expected.
Row_Splitter::Turn Row_Splitter::find_turn(const std::uint8_t* rows, std::size_t row_count) const {
    Turn turn{};
    turn.most = row_count;
    unsigned seen = 0;
    const std::size_t longest = std::min(row_count, turn.streams.size());
    while (turn.length < longest) {
        const unsigned stream = mux_row::stream_id_of(rows + turn.length * mux_row::length);
        const std::size_t room = room_of(stream);
        if ((seen >> stream & 1U) != 0 || room == 0) {
            break;
        }
        seen |= 1U << stream;
        turn.most = std::min(turn.most, room);
        turn.streams[turn.length++] = stream;
    }
    if (turn.length != 0) {
        turn.most = std::min(turn.most, row_count / turn.length);
    }
    return turn;
}

// What is expected of the next rows, and where they go, is kept in registers.
template <std::size_t length>
std::size_t Row_Splitter::copy_turns(const std::uint8_t* rows, const Turn& turn) {
    std::array<std::uint16_t, length> expected;
    std::array<std::uint8_t*, length> place;
    for (std::size_t i = 0; i < length; ++i) {
        expected[i] = header_after(turn.streams[i], m_last_row_counter[turn.streams[i]]);
        place[i] = place_of(turn.streams[i]);
    }
    std::size_t turns = 0;
    for (; turns < turn.most; ++turns) {
        unsigned differences = 0;
        for (std::size_t i = 0; i < length; ++i) {
            differences |= static_cast<unsigned>(header_of(rows + i * mux_row::length) ^ expected[i]);
        }
        if (differences != 0) {
            break;
        }
        for (std::size_t i = 0; i < length; ++i) {
            copy_payload(place[i], rows + i * mux_row::length);
            place[i] += mux_row::payload_length;
            expected[i] = static_cast<std::uint16_t>(expected[i] + counter_step);
        }
        rows += length * mux_row::length;
    }
    if (turns == 0) {
        return 0;
    }
    for (std::size_t i = 0; i < length; ++i) {
        advance(turn.streams[i], turns);
        if (m_streams_behind_loss != 0) [[unlikely]] {
            note_rows(turn.streams[i]);
        }
        m_last_row_counter[turn.streams[i]] =
            static_cast<std::uint8_t>(m_last_row_counter[turn.streams[i]] + turns);
    }
    return turns * length;
}

// Rows of the stream that can be taken without a closer look. A port's first row has to begin a super frame,
// and the row behind a full block sends the block away.
std::size_t Row_Splitter::room_of(unsigned stream) const {
    if (stream < np_port_count) {
        const std::size_t fill = m_np_blocks[stream]->fill;
        return fill == 0 ? 0 : (m_block_length - fill) / mux_row::payload_length;
    }
    return stream == mux_row::rhd_stream_id ? rhd_piece_capacity / mux_row::payload_words - m_rhd_rows_placed
                                            : 0;
}

std::uint8_t* Row_Splitter::place_of(unsigned stream) {
    if (stream < np_port_count) {
        return m_np_blocks[stream]->data + m_np_blocks[stream]->fill;
    }
    return reinterpret_cast<std::uint8_t*>(m_rhd_worker.place_for_words() +
                                           m_rhd_rows_placed * mux_row::payload_words);
}

// Counts rows that were put to the place of their stream.
void Row_Splitter::advance(unsigned stream, std::size_t row_count) {
    if (stream < np_port_count) {
        m_np_blocks[stream]->fill += static_cast<std::uint32_t>(row_count * mux_row::payload_length);
        m_np_rows[stream] += static_cast<std::uint32_t>(row_count);
    } else {
        m_rhd_rows_placed += row_count;
    }
}

// From its first row behind a loss on, the counter of a stream is known again.
void Row_Splitter::note_rows(unsigned stream) {
    m_streams_behind_loss &= ~(std::uint32_t{1} << stream);
}

// Any row at all. False, and nothing done, for one without a marker.
bool Row_Splitter::take_row(const std::uint8_t* row) {
    if (!mux_row::has_marker(row)) {
        return false;
    }
    const unsigned stream = mux_row::stream_id_of(row);
    const std::uint8_t counter = row[mux_row::counter_offset];
    std::uint8_t& last_counter = m_last_row_counter[stream];
    const bool is_next = static_cast<std::uint8_t>(last_counter + 1) == counter;
    if (!is_next && (m_streams_behind_loss >> stream & 1U) == 0) {
        m_row_gaps[stream].fetch_add(1);
        anomaly::row_counter_discontinuity(stream, m_total_row_index, last_counter, counter);
    }
    last_counter = counter;
    note_rows(stream);

    if (stream < np_port_count) {
        take_np_row(stream, row);
    } else if (stream == mux_row::rhd_stream_id) {
        append_payload(stream, row);
    } else {
        anomaly::unknown_stream_id(stream);
    }
    return true;
}

void Row_Splitter::take_np_row(unsigned port, const std::uint8_t* row) {
    if (m_np_blocks[port]->fill == m_block_length) {
        hand_over_block(port);
    }
    if (m_np_blocks[port]->fill != 0 || mux_row::starts_super_frame(row)) {
        append_payload(port, row);
        m_is_rejoining[port] = false;
    } else if (!m_is_rejoining[port]) {
        anomaly::row_discarded(port);
    }
}

void Row_Splitter::append_payload(unsigned stream, const std::uint8_t* row) {
    copy_payload(place_of(stream), row);
    advance(stream, 1);
}

void Row_Splitter::hand_over_block(unsigned port) {
    if (!m_np_workers[port]->has_room()) [[unlikely]] {
        drop_block(port);
        return;
    }
    const auto count = static_cast<std::uint32_t>(m_np_workers[port]->exchange_block(m_np_blocks[port]));
    m_np_blocks[port]->fill = 0;
    m_np_blocks[port]->lost_before = 0;
    if (np_queue_high_water_mark[port].raise(count)) {
        console::out("NP worker ", port, " element count high_water_mark : ", count, '\n');
    }
}

// The next row begins a super frame, as it does behind a block that is handed over.
void Row_Splitter::drop_block(unsigned port) {
    NP_Block_Buffer& block = *m_np_blocks[port];
    const auto super_frames = static_cast<std::uint32_t>(block.fill / psb::bytes_per_super_frame);
    m_np_losses[port]->count(super_frames);
    block.lost_before += super_frames;
    block.fill = 0;
}

// A port's last super frame of which a part is lost is lost whole, and what is left of it behind the loss is
// not taken. Whole ones go to the worker at once, so that no block holds rows from both sides.
void Row_Splitter::skip(const Stream_Loss& loss) {
    for (unsigned port = 0; port < np_port_count; ++port) {
        const auto part = static_cast<std::uint32_t>(m_np_blocks[port]->fill % psb::bytes_per_super_frame);
        m_np_blocks[port]->fill -= part;
        if (m_np_blocks[port]->fill != 0) {
            hand_over_block(port);
        }
        m_np_blocks[port]->lost_before += loss.super_frames[port] + (part != 0 ? 1U : 0U);
    }
    m_is_rejoining.fill(true);
    m_rhd_worker.note_loss();
    m_streams_behind_loss = all_streams;
}

std::uint64_t Row_Splitter::lost_super_frames(unsigned port) const {
    return checked_at(m_np_losses, port)->total();
}

std::uint64_t Row_Splitter::row_gaps(unsigned stream) const {
    return checked_at(m_row_gaps, stream);
}

void Row_Splitter::tell_losses() {
    for (auto& loss : m_np_losses) {
        loss->tell_rest();
    }
}

void Row_Splitter::hand_over_rhd_words() {
    if (m_rhd_rows_placed != 0) {
        m_rhd_worker.push_placed_words(m_rhd_rows_placed * mux_row::payload_words);
        m_rhd_rows += static_cast<std::uint32_t>(m_rhd_rows_placed);
    }
}

void Row_Splitter::drop_unfinished_blocks() {
    for (const auto& block : m_np_blocks) {
        block->fill = 0;
    }
}

} // namespace Pelgar::ORBE::demux
