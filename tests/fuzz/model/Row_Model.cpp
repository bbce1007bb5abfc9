#include "Row_Model.h"

#include <string>
#include <utility>

namespace Pelgar::ORBE::road_model {

namespace {

constexpr std::size_t row_length = 16;
constexpr std::size_t super_frame_length = 910;

bool has_marker(const std::uint8_t* row) {
    return row[0] / 16 == 0xD;
}

// The first word's bit 11.
bool begins_super_frame(const std::uint8_t* row) {
    return row[3] / 8 % 2 == 1;
}

} // namespace

Row_Model::Row_Model(const Road_Settings& settings, Process_Counters& process, Told& told, RHD_Model& rhd)
    : m_settings(settings), m_process(process), m_told(told), m_rhd(rhd) {
    m_last_counter.fill(255);
}

void Row_Model::take_transfer(const Bytes& transfer) {
    if (transfer.size() % row_length != 0) {
        m_told.err += "Buffer size incompatible\n";
    }
    if (!has_marker(transfer.data())) {
        m_told.out += "Async_PSB_And_RHD_Demux : Main mux data invalid, discarding data packet\n";
        return;
    }
    m_rhd_words.clear();
    for (std::size_t at = 0; at + row_length <= transfer.size(); at += row_length) {
        const std::uint8_t* const row = transfer.data() + at;
        if (!has_marker(row)) {
            break;
        }
        take_row(row);
        ++m_row_index;
    }
    m_rhd.push(m_rhd_words);
}

void Row_Model::take_row(const std::uint8_t* row) {
    const unsigned id = row[0] % 16;
    const unsigned counter = row[1];
    const unsigned last = m_last_counter[id];
    const bool is_next = (last + 1) % 256 == counter;
    if (!is_next && !m_counter_is_unknown[id]) {
        ++row_gaps[id];
        m_told.out += "Possible demux row counter disconitinuty for demux ch : " + std::to_string(id) +
                      " at row : " + std::to_string(m_row_index) + ", prev value : " + std::to_string(last) +
                      ", current value : " + std::to_string(counter) + "\n";
    }
    m_counter_is_unknown[id] = false;
    m_last_counter[id] = counter;

    if (id < port_count) {
        take_port_row(id, row);
    } else if (id == 4) {
        for (std::size_t byte = 2; byte < row_length; byte += 2) {
            m_rhd_words.push_back(static_cast<std::uint16_t>(row[byte] + 256 * row[byte + 1]));
        }
    } else {
        m_told.log.push_back(std::string("-1 Unknown demux stream id : ") + "0123456789abcdef"[id] + " ");
    }
}

void Row_Model::take_port_row(unsigned port, const std::uint8_t* row) {
    Block& block = m_filling[port];
    if (block.bytes.size() == m_settings.block_super_frames * super_frame_length) {
        hand_over(port);
    }
    if (block.bytes.empty() && !begins_super_frame(row)) {
        if (!m_is_behind_loss[port]) {
            m_told.out +=
                "Resync to super frame in progress. Row discarded. Demux ch : " + std::to_string(port) + "\n";
        }
        return;
    }
    m_is_behind_loss[port] = false;
    block.bytes.insert(block.bytes.end(), row + 2, row + row_length);
}

// Or loses it, when the port's thread is too far behind.
void Row_Model::hand_over(unsigned port) {
    Block& block = m_filling[port];
    if (!m_rules[port].admits(blocks[port].size(), m_settings.most_blocks)) {
        const auto super_frames = static_cast<std::uint32_t>(block.bytes.size() / super_frame_length);
        lost_super_frames[port] += super_frames;
        block.lost_before += super_frames;
        block.bytes.clear();
        return;
    }
    blocks[port].push_back(std::exchange(block, Block{}));
    const std::size_t waiting = blocks[port].size();
    if (waiting > m_process.np_queue_marks[port]) {
        m_process.np_queue_marks[port] = waiting;
        m_told.out += "NP worker " + std::to_string(port) +
                      " element count high_water_mark : " + std::to_string(waiting) + "\n";
    }
}

// A super frame of which a part is lost is lost whole.
void Row_Model::take_loss(const std::array<std::uint32_t, port_count>& super_frames) {
    for (unsigned port = 0; port < port_count; ++port) {
        Block& block = m_filling[port];
        const std::size_t whole = block.bytes.size() / super_frame_length * super_frame_length;
        const bool is_torn = block.bytes.size() != whole;
        block.bytes.resize(whole);
        if (whole != 0) {
            hand_over(port);
        }
        m_filling[port].lost_before += super_frames[port] + (is_torn ? 1U : 0U);
        m_is_behind_loss[port] = true;
    }
    m_counter_is_unknown.fill(true);
    m_rhd.note_loss();
}

void Row_Model::forget() {
    for (Block& block : m_filling) {
        block.bytes.clear();
    }
}

} // namespace Pelgar::ORBE::road_model
