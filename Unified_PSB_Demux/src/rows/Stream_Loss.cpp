#include "rows/Stream_Loss.h"

#include <cstddef>

namespace Pelgar::ORBE::demux {

void Stream_Loss::add(const Main_mux_transfer_buffer_wrapper& transfer) {
    const std::uint8_t* row = transfer.data;
    const std::uint8_t* const end = row + transfer.size / mux_row::length * mux_row::length;
    for (; row != end && mux_row::has_marker(row); row += mux_row::length) {
        const unsigned stream = mux_row::stream_id_of(row);
        if (stream < np_port_count && mux_row::starts_super_frame(row)) {
            ++super_frames[stream];
        }
    }
}

} // namespace Pelgar::ORBE::demux
