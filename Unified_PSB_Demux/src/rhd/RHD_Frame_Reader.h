// Layer: demultiplexer. Finds the Intan RHD frames in the word stream of the box. Called on the RHD worker
// thread; blocks while the FIFO is empty; allocates only what a record lacks, one small array a stream.
#pragma once

#include "common/Relaxed.h"
#include "rhd/RHD_Frame.h"
#include "rhd/RHD_Turn.h"
#include "rhd/RHD_Word_Fifo.h"

#include <array>
#include <cstdint>
#include <span>

namespace Pelgar::ORBE::demux {

class RHD_Frame_Reader {
public:
    // The FIFO must outlive the reader.
    explicit RHD_Frame_Reader(RHD_Word_Fifo& fifo);

    // Reads one frame into the record, whatever that holds, and tells whether it is valid. A frame whose
    // preamble is wrong is reported and given up behind the preamble. The FIFO's stop signal ends the search
    // for a preamble, and fills up a frame that has begun with zeros. Throws RHD_Words_Forgotten when the
    // FIFO forgets its words; the record is then of no use, and no frame is counted.
    bool read_frame(RHD_Frame& frame);

    // The number of data streams in the frames that begin from now on. The words of streams that the record
    // has no room for are passed over. Any thread.
    void set_enabled_stream_count(std::uint32_t count) { m_enabled_rhd_stream_count = count; }

    // Valid frames read since construction. Any thread.
    std::uint32_t get_valid_frame_count() const { return m_valid_frame_count; }

private:
    bool read_frame_in_place(RHD_Frame& frame);
    bool read_frame_word_by_word(RHD_Frame& frame);
    std::uint16_t find_preamble();
    std::uint32_t read_double_word();
    void read_amplifier_data(RHD_Frame& frame, std::uint32_t stream_count);

    RHD_Word_Fifo& m_fifo;
    Relaxed<std::uint32_t> m_enabled_rhd_stream_count{0};
    Relaxed<std::uint32_t> m_valid_frame_count{0};
    // The amplifier words, in the order of the wire, of a frame that does not lie in one piece.
    std::array<std::uint16_t, rhd_words_per_stream * rhd_max_stream_count> m_words{};
};

} // namespace Pelgar::ORBE::demux
