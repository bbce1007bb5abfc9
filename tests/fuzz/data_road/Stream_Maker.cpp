#include "Stream_Maker.h"

#include <algorithm>

namespace Pelgar::ORBE::test {

namespace {

constexpr std::size_t row_length = 16;
constexpr std::size_t payload_length = 14;

void append_word(Bytes& bytes, unsigned word) {
    bytes.push_back(static_cast<std::uint8_t>(word & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(word >> 8 & 0xFF));
}

unsigned value_of(unsigned port, std::uint32_t frame, unsigned adc) {
    return (frame * 31 + adc * 7 + port * 101 + 1) & 0x3FF;
}

} // namespace

void Stream_Maker::append_row(unsigned id, std::span<const std::uint8_t> payload) {
    transfer.push_back(static_cast<std::uint8_t>(0xD0 | id));
    transfer.push_back(m_row_counters[id]++);
    Row_Payload whole{};
    std::copy_n(payload.begin(), std::min(payload.size(), whole.size()), whole.begin());
    transfer.insert(transfer.end(), whole.begin(), whole.end());
}

std::vector<Stream_Maker::Row_Payload> Stream_Maker::super_frame(unsigned port) {
    std::vector<Row_Payload> rows;
    for (unsigned frame = 0; frame < 13; ++frame) {
        const std::uint32_t counter = m_frames[port]++ & 0xFFFFF;
        std::array<unsigned, 35> values{};
        for (unsigned adc = 0; adc < 32; ++adc) {
            values[adc] = value_of(port, counter, adc);
        }
        values[33] = counter >> 10;
        values[34] = counter & 0x3FF;
        for (unsigned row = 0; row < 5; ++row) {
            Row_Payload& payload = rows.emplace_back();
            for (unsigned lane = 0; lane < 7; ++lane) {
                const unsigned flag = frame == 0 && row == 0 && lane == 0 ? 0x0800 : 0;
                const unsigned word = (lane + 1) << 12 | flag | values[5 * lane + row];
                payload[2 * lane] = static_cast<std::uint8_t>(word & 0xFF);
                payload[2 * lane + 1] = static_cast<std::uint8_t>(word >> 8);
            }
        }
    }
    return rows;
}

void Stream_Maker::append_super_frames(unsigned port, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        for (const Row_Payload& payload : super_frame(port)) {
            append_row(port, payload);
        }
    }
}

void Stream_Maker::append_turns(unsigned streams) {
    std::array<std::vector<Row_Payload>, 4> rows;
    for (unsigned port = 0; port < 4; ++port) {
        if ((streams >> port & 1U) != 0) {
            rows[port] = super_frame(port);
        }
    }
    for (std::size_t row = 0; row < 65; ++row) {
        for (unsigned port = 0; port < 4; ++port) {
            if (!rows[port].empty()) {
                append_row(port, rows[port][row]);
            }
        }
        if ((streams & 16U) != 0 && !append_rhd_row()) {
            add_rhd_frame();
            append_rhd_row();
        }
    }
}

void Stream_Maker::append_rhd_frames(unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        add_rhd_frame();
        while (append_rhd_row()) {
        }
    }
}

void Stream_Maker::add_rhd_frame() {
    for (const unsigned word : {0x2A53U, 0x3813U, 0x2AAAU, 0xD7A2U}) {
        append_word(m_rhd_bytes, word);
    }
    append_word(m_rhd_bytes, m_rhd_stamp & 0xFFFF);
    append_word(m_rhd_bytes, m_rhd_stamp >> 16);
    for (unsigned i = 0; i < 35 * m_rhd_streams + m_rhd_streams % 4 + 2; ++i) {
        append_word(m_rhd_bytes, (m_rhd_stamp * 3 + i * 5) & 0x7FFF);
    }
    for (unsigned input = 0; input < 8; ++input) {
        append_word(m_rhd_bytes, m_adc + 97 * input + (m_rhd_stamp & 0xF));
    }
    append_word(m_rhd_bytes, m_ttl & 0xFFFF);
    append_word(m_rhd_bytes, m_ttl >> 16);
    append_word(m_rhd_bytes, 0x5678);
    append_word(m_rhd_bytes, 0x1234);
    ++m_rhd_stamp;
}

// False when there are not enough words.
bool Stream_Maker::append_rhd_row() {
    if (m_rhd_bytes.size() < payload_length) {
        return false;
    }
    append_row(4, std::span(m_rhd_bytes).first(payload_length));
    m_rhd_bytes.erase(m_rhd_bytes.begin(), m_rhd_bytes.begin() + payload_length);
    return true;
}

void Stream_Maker::flip(std::size_t byte, std::uint8_t bits) {
    if (!transfer.empty()) {
        transfer[byte % transfer.size()] ^= bits;
    }
}

void Stream_Maker::cut(std::size_t bytes) {
    const auto count = static_cast<std::ptrdiff_t>(std::min(bytes, transfer.size()));
    transfer.erase(transfer.end() - count, transfer.end());
}

void Stream_Maker::leave_out_rows(std::size_t from_end, std::size_t count) {
    const std::size_t last = row_count() - std::min(from_end, row_count());
    const std::size_t first = last - std::min(count, last);
    const auto rows = transfer.begin();
    transfer.erase(rows + static_cast<std::ptrdiff_t>(first * row_length),
                   rows + static_cast<std::ptrdiff_t>(last * row_length));
}

void Stream_Maker::repeat_rows(std::size_t from_end, std::size_t count) {
    const std::size_t last = row_count() - std::min(from_end, row_count());
    const std::size_t first = last - std::min(count, last);
    const auto rows = transfer.begin();
    const Bytes repeated(rows + static_cast<std::ptrdiff_t>(first * row_length),
                         rows + static_cast<std::ptrdiff_t>(last * row_length));
    transfer.insert(rows + static_cast<std::ptrdiff_t>(last * row_length), repeated.begin(), repeated.end());
}

void Stream_Maker::exchange_rows(std::size_t from_end, std::size_t distance) {
    if (from_end + distance >= row_count()) {
        return;
    }
    const auto second =
        transfer.begin() + static_cast<std::ptrdiff_t>((row_count() - 1 - from_end) * row_length);
    std::swap_ranges(second, second + row_length,
                     second - static_cast<std::ptrdiff_t>(distance * row_length));
}

void Stream_Maker::set_byte(std::size_t from_end, std::size_t byte, std::uint8_t value) {
    if (from_end < row_count()) {
        transfer[(row_count() - 1 - from_end) * row_length + byte % row_length] = value;
    }
}

} // namespace Pelgar::ORBE::test
