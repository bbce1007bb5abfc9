// Layer: demultiplexer. What transfers that never reached the main demux thread would have brought. Counted
// on the pump thread, used on the main demux thread.
#pragma once

#include "wire/Main_mux_transfer_buffer_wrapper.h"
#include "wire/Mux_Row_Format.h"

#include <array>
#include <cstdint>

namespace Pelgar::ORBE::demux {

struct Stream_Loss {
    // The super frames of each port that begin in the lost transfers.
    std::array<std::uint32_t, np_port_count> super_frames;

    // Adds a transfer, up to its first row without a marker.
    void add(const Main_mux_transfer_buffer_wrapper& transfer);
};

} // namespace Pelgar::ORBE::demux
