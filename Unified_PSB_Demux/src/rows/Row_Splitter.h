// Layer: demultiplexer. Splits the DMA stream into the streams that it is made of: rows of a probe port into
// the block of the port, which goes to the port's worker when it is full, and RHD rows into words for the RHD
// worker. Called on the main demux thread; blocks on the workers' queues only.
#pragma once

#include "common/Relaxed.h"
#include "probe/C_NP_Worker_Thread.h"
#include "rhd/C_RHD_Worker_Thread.h"
#include "rows/Stream_Loss.h"
#include "wire/Loss_Report.h"
#include "wire/Mux_Row_Format.h"
#include "wire/NP_Block_Buffer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace Pelgar::ORBE::demux {

using NP_Workers = std::array<std::unique_ptr<C_NP_Worker_Thread>, np_port_count>;

class Row_Splitter {
public:
    // The workers must outlive the splitter.
    Row_Splitter(NP_Workers& np_workers, C_RHD_Worker_Thread& rhd_worker);

    // Hands a block over when it has so many super frames, 1 to 1,792. Before the first row.
    void set_block_length(std::uint32_t super_frames);

    // In bytes.
    std::size_t block_length() const { return m_block_length; }

    // Goes through the rows of one transfer, up to the first one without a marker.
    void split(const std::uint8_t* rows, std::size_t row_count);

    // Transfers are missing between the last one and the next. The streams are cut there, and each goes on
    // with its first whole super frame or RHD frame behind the loss.
    void skip(const Stream_Loss& loss);

    // Super frames that the port's worker had no room for. Any thread; std::out_of_range for another port.
    std::uint64_t lost_super_frames(unsigned port) const;

    // Places where the row counter of the stream jumped, but for losses that `skip` was told of. Any thread;
    // std::out_of_range for a stream id that there is not.
    std::uint64_t row_gaps(unsigned stream) const;

    // Tells what was lost and not told yet.
    void tell_losses();

    // Forgets the rows that do not fill a block yet.
    void drop_unfinished_blocks();

    // Rows used since construction.
    std::uint32_t np_rows(unsigned port) const { return m_np_rows[port]; }

    std::uint32_t rhd_rows() const { return m_rhd_rows; }

private:
    // Streams whose rows take turns: as many rows as there are different streams in a row, at most all that
    // are known.
    struct Turn {
        std::array<unsigned, np_port_count + 1> streams;
        std::size_t length;
        std::size_t most; // so many turns find room where their rows go
    };

    std::size_t take_turns(const std::uint8_t* rows, std::size_t row_count);
    Turn find_turn(const std::uint8_t* rows, std::size_t row_count) const;
    template <std::size_t length>
    std::size_t copy_turns(const std::uint8_t* rows, const Turn& turn);
    std::size_t room_of(unsigned stream) const;
    std::uint8_t* place_of(unsigned stream);
    void advance(unsigned stream, std::size_t row_count);

    void note_rows(unsigned stream);
    bool take_row(const std::uint8_t* row);
    void take_np_row(unsigned port, const std::uint8_t* row);
    void append_payload(unsigned stream, const std::uint8_t* row);
    void hand_over_block(unsigned port);
    void drop_block(unsigned port);
    void hand_over_rhd_words();

    NP_Workers& m_np_workers;
    C_RHD_Worker_Thread& m_rhd_worker;
    // The block of each port that is being filled.
    std::array<std::unique_ptr<NP_Block_Buffer>, np_port_count> m_np_blocks;
    std::size_t m_block_length = np_block_capacity; // bytes
    std::size_t m_rhd_rows_placed = 0;              // of this transfer
    // The last row counter of each stream id.
    std::array<std::uint8_t, mux_row::stream_id_count> m_last_row_counter;
    std::array<std::uint32_t, np_port_count> m_np_rows{};
    std::uint32_t m_rhd_rows = 0;
    std::uint32_t m_total_row_index = 0;
    // The streams that have had no row since a loss, a bit each: their counters may have gone anywhere.
    std::uint32_t m_streams_behind_loss = 0;
    // The ports that have not begun a super frame since a loss.
    std::array<bool, np_port_count> m_is_rejoining{};
    std::array<std::optional<Loss_Report>, np_port_count> m_np_losses;
    std::array<Relaxed<std::uint64_t>, mux_row::stream_id_count> m_row_gaps;
};

} // namespace Pelgar::ORBE::demux
