#include "sources/Super_Frame_Finder.h"

#include "host_streams/Prompt_Delivery.h"
#include "probe/Super_Frame.h"
#include "stream_format/Row_View.h"

#include <algorithm>
#include <cstring>

namespace Pelgar::ORBE::view {

namespace {

using namespace recording;

constexpr std::size_t super_frame_bytes = rows_per_super_frame * row_payload_bytes;
static_assert(super_frame_bytes == demux::psb::bytes_per_super_frame);

bool counters_run_on(const std::uint8_t* super_frame, std::uint32_t first) {
    for (std::uint32_t frame = 1; frame < frames_per_super_frame; ++frame) {
        if (demux::super_frame::frame_counter(super_frame, frame) != ((first + frame) & counter_mask)) {
            return false;
        }
    }
    return true;
}

// Puts the rows of one port together as the decoder does: from a start flag on, row behind row, for a block
// of super frames. Where one does not begin with its flag rows are missing, and the rest of the block is
// lost.
class Port_Rows {
public:
    // Calls `found(counter)` with that of a super frame that is in order, and ends with this row.
    template <typename Found>
    void take(Row_View row, Found&& found) {
        if (m_super_frames == 0 && m_row == 0 && !row.starts_super_frame()) {
            return;
        }
        std::memcpy(m_bytes.data() + m_row * row_payload_bytes, row.payload(), row_payload_bytes);
        if (++m_row != rows_per_super_frame) {
            return;
        }
        m_row = 0;
        if (!m_is_astray) {
            look(found);
        }
        if (++m_super_frames == npoe_adapter::prompt_block_super_frames) {
            m_super_frames = 0;
            m_is_astray = false;
        }
    }

private:
    template <typename Found>
    void look(Found&& found) {
        const std::uint32_t first = demux::super_frame::frame_counter(m_bytes.data(), 0);
        if (demux::super_frame::is_in_order(m_bytes.data()) && counters_run_on(m_bytes.data(), first)) {
            found(first);
        } else {
            m_is_astray = !demux::super_frame::has_start_flag(m_bytes.data());
        }
    }

    std::array<std::uint8_t, super_frame_bytes> m_bytes;
    std::size_t m_row = 0;
    std::uint32_t m_super_frames = 0; // of the block
    bool m_is_astray = false;
};

} // namespace

Super_Frame_Finder::Places Super_Frame_Finder::find(std::span<const std::uint8_t> piece) {
    std::array<Port_Rows, port_count> ports;
    Places places;
    while (!piece.empty()) {
        // A row without its marker costs the rest of its transfer.
        const auto transfer = std::min<std::size_t>(piece.size(), npoe_adapter::prompt_transfer_bytes);
        for_each_row(piece.first(transfer), [&](Row_View row) {
            const unsigned port = row.stream();
            if (port >= port_count) {
                return;
            }
            ports[port].take(row, [&](std::uint32_t counter) {
                const std::uint64_t number = m_samples[port].number_of(m_counters[port].follow(counter));
                places[port] = {places[port] ? places[port]->number : number, number + 1};
            });
        });
        piece = piece.subspan(transfer);
    }
    return places;
}

} // namespace Pelgar::ORBE::view
