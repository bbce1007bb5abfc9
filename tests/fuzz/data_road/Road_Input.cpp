#include "Road_Input.h"

#include "Road_Step.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace Pelgar::ORBE::test {

namespace {

using namespace road_step;
using road_model::Listening;

constexpr std::size_t transfer_capacity = 0x100000;
// What an input may make the box send, so that none takes long. Whole blocks of the box's own way come on
// top.
constexpr std::size_t most_bytes = std::size_t{160} * 1024;
constexpr unsigned whole_block_super_frames = 1792;
constexpr unsigned most_whole_blocks = 1;
constexpr unsigned everybody = 0x1F;

constexpr std::array<road_model::Sync_Wiring, 6> wirings{{
    {0x100, 0},           // the first TTL input
    {0x8400, 0},          // the third and the eighth
    {0x10000, 0},         // the first comparator
    {0x08000000, 0},      // the twelfth, which is the fourth TTL input
    {0, 6},               // the clock
    {0x200 | 0x80000, 0}, // the second TTL input and the fourth comparator
}};

constexpr std::array<std::size_t, 4> adc_row_lengths{24, 12, 32, 5};

} // namespace

Road_Input::Road_Input(const std::uint8_t* data, std::size_t size) : m_input(data, size) {
    read_settings();
    m_stream.emplace(m_settings.rhd_streams);
}

void Road_Input::read_settings() {
    const unsigned way = m_input.byte();
    m_settings.host_mode = (way & 1U) != 0;
    m_works_by_itself = (way & 2U) == 0;
    m_settings.gain_loaded = (way & 4U) != 0;
    m_settings.adc_listening = (way & 8U) == 0;
    if ((way & 16U) != 0) {
        m_settings.most_transfers = 2 + (way >> 5U);
        m_settings.most_blocks = 2;
    }
    const unsigned block = m_input.byte();
    const unsigned usual = m_settings.host_mode ? 120 : whole_block_super_frames;
    m_settings.block_super_frames = block == 0xFF ? usual : 1 + block % 16;
    m_settings.rhd_streams = m_input.byte() % 41U;
    const unsigned listening = m_input.byte();
    for (unsigned port = 0; port < road_model::port_count; ++port) {
        const unsigned kind = listening >> 2 * port & 3U;
        m_settings.ports[port] = kind == 0   ? Listening::everything
                                 : kind == 1 ? Listening::no_converter
                                 : kind == 2 ? Listening::nobody
                                             : Listening::everything;
    }
    m_settings.gain_seed = m_input.byte();
    const unsigned wiring = m_input.byte();
    m_settings.sync = wirings[wiring % wirings.size()];
    m_settings.adc_row_length = adc_row_lengths[wiring / 64];
}

std::optional<Road_Event> Road_Input::next() {
    while (m_due.empty() && !m_is_at_end) {
        if (m_input.empty() || m_bytes_made > most_bytes) {
            m_is_at_end = true;
            m_due = {{Happening::read, {}, 0}, {Happening::work, {}, everybody}};
            if (!m_stream->transfer.empty()) {
                m_due.push_back(transfer());
            }
        } else if (auto event = take_step()) {
            m_due.push_back(std::move(*event));
        }
    }
    if (m_due.empty()) {
        return std::nullopt;
    }
    Road_Event event = std::move(m_due.back());
    m_due.pop_back();
    if (event.happening == Happening::transfer && m_works_by_itself && m_due.empty()) {
        m_due.push_back({Happening::work, {}, everybody});
    }
    return event;
}

Road_Event Road_Input::transfer() {
    Bytes bytes = std::exchange(m_stream->transfer, {});
    m_bytes_made += bytes.size();
    bytes.resize(std::min(bytes.size(), transfer_capacity));
    return {Happening::transfer, std::move(bytes), 0};
}

// In transfers, what is there already in the first; it does not count for the length of the input.
void Road_Input::make_whole_block(unsigned port) {
    constexpr unsigned parts = 4;
    std::vector<Road_Event> transfers;
    for (unsigned part = 0; part < parts; ++part) {
        m_stream->append_super_frames(port, whole_block_super_frames / parts);
        transfers.push_back(transfer());
    }
    m_bytes_made = 0;
    m_due.assign(std::make_move_iterator(transfers.rbegin()), std::make_move_iterator(transfers.rend()));
}

// What a step makes happen, if it is more than a change of the transfer that is being made.
std::optional<Road_Event> Road_Input::take_step() {
    Stream_Maker& stream = *m_stream;
    const unsigned byte = m_input.byte();
    const bool is_step = byte < step_count || byte % step_count != whole_block;
    switch (is_step ? byte % step_count : super_frames) {
    case end_transfer:
        break;
    case super_frames: {
        const unsigned which = m_input.byte();
        stream.append_super_frames(which % 4, 1 + which / 4 % 16);
        break;
    }
    case turns:
        stream.append_turns(m_input.byte());
        break;
    case rhd_frames: {
        // Long frames are few.
        const unsigned count = 1U + m_input.byte() % 64U;
        stream.append_rhd_frames(m_settings.rhd_streams < 4 ? count : 1 + count % 8);
        break;
    }
    case row: {
        const unsigned id = m_input.byte() % 16U;
        stream.append_row(id, m_input.bytes(14));
        break;
    }
    case raw: {
        const auto bytes = m_input.bytes(m_input.byte());
        stream.transfer.insert(stream.transfer.end(), bytes.begin(), bytes.end());
        break;
    }
    case skip_rows: {
        const unsigned id = m_input.byte() % 16U;
        stream.skip_rows(id, m_input.byte());
        break;
    }
    case skip_frames: {
        const unsigned port = m_input.byte() % 4U;
        stream.skip_frames(port, m_input.word());
        break;
    }
    case set_frame: {
        const unsigned which = m_input.byte();
        stream.set_frame(which % 4, (which >> 2 & 0xFU) << 16 | m_input.word());
        break;
    }
    case skip_rhd:
        stream.skip_rhd_frames(m_input.word());
        break;
    case set_rhd_stamp: {
        const unsigned low = m_input.word();
        stream.set_rhd_stamp(static_cast<std::uint32_t>(m_input.word()) << 16 | low);
        break;
    }
    case set_ttl: {
        const unsigned low = m_input.word();
        stream.set_ttl(static_cast<std::uint32_t>(m_input.word()) << 16 | low);
        break;
    }
    case set_adc:
        stream.set_adc(m_input.word());
        break;
    case flip: {
        const std::size_t at = m_input.word();
        stream.flip(at, m_input.byte());
        break;
    }
    case cut:
        stream.cut(m_input.byte());
        break;
    case leave_out_rows: {
        const unsigned from_end = m_input.byte();
        stream.leave_out_rows(from_end, m_input.byte());
        break;
    }
    case repeat_rows: {
        const unsigned from_end = m_input.byte();
        stream.repeat_rows(from_end, m_input.byte());
        break;
    }
    case exchange_rows: {
        const unsigned from_end = m_input.byte();
        stream.exchange_rows(from_end, m_input.byte());
        break;
    }
    case set_byte: {
        const unsigned from_end = m_input.byte();
        const unsigned place = m_input.byte();
        stream.set_byte(from_end, place, m_input.byte());
        break;
    }
    case work:
        return Road_Event{Happening::work, {}, m_input.byte()};
    case resync:
        return Road_Event{Happening::resync, {}, 0};
    case forget:
        return Road_Event{Happening::forget, {}, 0};
    case gains:
        return Road_Event{Happening::gains, {}, m_input.byte()};
    case read:
        return Road_Event{Happening::read, {}, 0};
    case restart:
        return Road_Event{Happening::restart, {}, 0};
    case pause:
        return Road_Event{Happening::pause, {}, m_input.byte()};
    default: {
        const unsigned port = m_input.byte() % 4U;
        if (m_settings.block_super_frames == whole_block_super_frames &&
            m_whole_blocks++ < most_whole_blocks) {
            make_whole_block(port);
        }
    }
    }
    const bool is_full = stream.transfer.size() > transfer_capacity / 2;
    const bool ends = byte % step_count == end_transfer || is_full;
    return ends && !stream.transfer.empty() ? std::optional(transfer()) : std::nullopt;
}

} // namespace Pelgar::ORBE::test
