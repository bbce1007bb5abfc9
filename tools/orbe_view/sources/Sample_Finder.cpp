#include "sources/Sample_Finder.h"

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

// Finds frames among the words of the inputs as the decoder does: by a preamble, at any place, and behind
// what only begins like one.
class Input_Words {
public:
    // Calls `found(stamp)` with that of a frame that ends with this word.
    template <typename Found>
    void take(std::uint16_t word, Found&& found) {
        if (m_word == 0 && word != rhd_magic_word(0)) {
            return;
        }
        if (m_word < rhd_magic_words) {
            m_magic = m_magic >> word_bits | static_cast<std::uint64_t>(word) << (3 * word_bits);
        }
        ++m_word;
        if (m_word == rhd_magic_words && m_magic != rhd_magic) {
            m_word = 0;
        } else if (m_word == rhd_magic_words + 1) {
            m_stamp = word;
        } else if (m_word == rhd_magic_words + 2) {
            m_stamp |= static_cast<std::uint32_t>(word) << word_bits;
        } else if (m_word == rhd_frame_words(0)) {
            m_word = 0;
            found(m_stamp);
        }
    }

private:
    static constexpr unsigned word_bits = 16;

    std::size_t m_word = 0; // of the frame
    std::uint64_t m_magic = 0;
    std::uint32_t m_stamp = 0;
};

void add(std::optional<Sample_Finder::Place>& place, std::uint64_t number) {
    place = {place ? place->number : number, number + 1};
}

} // namespace

Sample_Finder::Places Sample_Finder::find(std::span<const std::uint8_t> piece) {
    std::array<Port_Rows, recording::port_count> ports;
    Input_Words inputs;
    Places places;
    while (!piece.empty()) {
        // A row without its marker costs the rest of its transfer.
        const auto transfer = std::min<std::size_t>(piece.size(), npoe_adapter::prompt_transfer_bytes);
        for_each_row(piece.first(transfer), [&](Row_View row) {
            const unsigned stream = row.stream();
            if (stream < m_counters.size()) {
                ports[stream].take(row, [&](std::uint32_t counter) {
                    add(places[stream], m_samples[stream].number_of(m_counters[stream].follow(counter)));
                });
            } else if (stream == rhd_stream) {
                for (std::size_t word = 0; word < row_words; ++word) {
                    inputs.take(row.word(word),
                                [&](std::uint32_t stamp) { add(places[stream], follow_input(stamp)); });
                }
            }
        });
        piece = piece.subspan(transfer);
    }
    return places;
}

// Stamps of 32 bits, which can go back.
std::uint64_t Sample_Finder::follow_input(std::uint32_t stamp) {
    const auto step = static_cast<std::int32_t>(stamp - static_cast<std::uint32_t>(m_input_counter));
    m_input_counter += static_cast<std::uint64_t>(static_cast<std::int64_t>(step));
    return m_samples[rhd_stream].number_of(m_input_counter);
}

} // namespace Pelgar::ORBE::view
