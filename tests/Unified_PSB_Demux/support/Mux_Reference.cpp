#include "Mux_Reference.h"

namespace Pelgar::ORBE::test {

void Mux_Reference::feed_transfer_buffer(const Bytes& buffer) {
    if (buffer.size() % 16 != 0) {
        ++incompatible_sizes;
    }
    for (std::size_t at = 0; at + 16 <= buffer.size(); at += 16) {
        const auto first = buffer.begin() + static_cast<std::ptrdiff_t>(at);
        const Bytes row(first, first + 16);
        if (row[0] / 16 != 0xD) {
            if (at == 0) {
                row_lines += "Async_PSB_And_RHD_Demux : Main mux data invalid, discarding data packet\n";
            }
            return;
        }
        take_row(row);
        ++m_row_index;
    }
}

void Mux_Reference::take_row(const Bytes& row) {
    const unsigned id = row[0] % 16;
    const unsigned counter = row[1];
    if ((m_last_counter[id] + 1) % 256 != counter) {
        row_lines += "Possible demux row counter disconitinuty for demux ch : " + std::to_string(id) +
                     " at row : " + std::to_string(m_row_index) +
                     ", prev value : " + std::to_string(m_last_counter[id]) +
                     ", current value : " + std::to_string(counter) + "\n";
    }
    m_last_counter[id] = counter;

    if (id < 4) {
        Bytes& block = m_blocks[id];
        if (block.size() == 1792 * 910) {
            ports[id].feed_block(block);
            block.clear();
        }
        const bool is_flagged = row[3] / 8 % 2 == 1;
        if (block.empty() && !is_flagged) {
            row_lines +=
                "Resync to super frame in progress. Row discarded. Demux ch : " + std::to_string(id) + "\n";
            return;
        }
        block.insert(block.end(), row.begin() + 2, row.end());
        ++port_rows[id];
    } else if (id == 4) {
        for (std::size_t i = 2; i < 16; i += 2) {
            m_rhd_words.push_back(static_cast<std::uint16_t>(row[i] + 256 * row[i + 1]));
        }
        ++rhd_rows;
    } else {
        constexpr const char* hexadecimal = "0123456789abcdef";
        unknown_ids.push_back(std::string("Unknown demux stream id : ") + hexadecimal[id] + " ");
    }
}

std::vector<Rhd_Frame_Copy> Mux_Reference::rhd_frames() const {
    const std::size_t n = m_rhd_stream_count;
    const std::size_t frame_length = 20 + 35 * n + n % 4;
    const Words& words = m_rhd_words;
    const auto double_word = [&words](std::size_t at) { return words[at] + 65536U * words[at + 1]; };

    std::vector<Rhd_Frame_Copy> frames;
    std::size_t at = 0;
    while (true) {
        while (at < words.size() && words[at] != 0x2A53) {
            ++at;
        }
        if (at + 4 > words.size()) {
            return frames;
        }
        if (words[at + 1] != 0x3813 || words[at + 2] != 0x2AAA || words[at + 3] != 0xD7A2) {
            at += 4;
            continue;
        }
        if (at + frame_length > words.size()) {
            return frames;
        }
        Rhd_Frame_Copy& frame = frames.emplace_back();
        frame.preamble = 0xD7A22AAA38132A53;
        frame.timestamp = double_word(at + 4);
        frame.amplifier_data.resize(32);
        for (std::size_t stream = 0; stream < n; ++stream) {
            auto& samples = frame.amplifier_data[stream].emplace();
            for (std::size_t position = 0; position < 35; ++position) {
                samples[position] = words[at + 6 + n * position + stream];
            }
        }
        const std::size_t tail = at + 6 + 35 * n + n % 4 + 2;
        for (std::size_t i = 0; i < 8; ++i) {
            frame.board_adc_data[i] = words[tail + i];
        }
        frame.ttl_in = double_word(tail + 8);
        frame.ttl_out = double_word(tail + 10);
        at += frame_length;
    }
}

} // namespace Pelgar::ORBE::test
