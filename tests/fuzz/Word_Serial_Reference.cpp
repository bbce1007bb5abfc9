#include "Word_Serial_Reference.h"

namespace Pelgar::ORBE::test {

void Word_Serial_Reference::feed(std::uint16_t word) {
    m_words.push_back(word);
    if (ends_with_sync_pattern()) {
        ++sync_patterns;
        if (!m_in_sync) {
            out += "Initial PSB Frame sync aquired\n";
        }
        m_in_sync = true;
        // A column is taken with its first word, so that a begun column counts.
        const unsigned columns_taken = (m_place + 4) / 5;
        if (columns_taken % 6 != 0) {
            out += "Resync_1\n";
        }
        if (m_place % 5 != 0) {
            out += "Resync_2\n";
        }
        m_place = 0;
    }
    if (!m_in_sync) {
        return;
    }
    if (m_place % 5 == 0) {
        take_column(m_place / 5);
    }
    m_place = (m_place + 1) % 30;
}

unsigned Word_Serial_Reference::word_before(std::size_t words_ago) const {
    return words_ago < m_words.size() ? m_words[m_words.size() - 1 - words_ago] : 0U;
}

// The uppermost bits of the last five words read 1, 0, 1, 0, 0.
bool Word_Serial_Reference::ends_with_sync_pattern() const {
    constexpr unsigned pattern[5] = {1, 0, 1, 0, 0};
    for (std::size_t i = 0; i < 5; ++i) {
        if (word_before(4 - i) / 0x8000 != pattern[i]) {
            return false;
        }
    }
    return true;
}

// Two bits of each of the last five words.
unsigned Word_Serial_Reference::value_of_lane(unsigned lane) const {
    constexpr unsigned unit_of_lane[7] = {0x1000, 0x400, 0x100, 0x40, 0x10, 4, 1};
    unsigned value = 0;
    for (std::size_t i = 0; i < 5; ++i) {
        value = 4 * value + word_before(4 - i) / unit_of_lane[lane] % 4;
    }
    return value;
}

void Word_Serial_Reference::take_column(unsigned column) {
    bool all_zero = true;
    for (unsigned lane = 0; lane < 7; ++lane) {
        const unsigned value = value_of_lane(lane);
        all_zero = all_zero && value == 0;
        if (column < 5) {
            m_frame[5 * lane + column] = static_cast<std::uint16_t>(value);
        }
    }
    if (column == 4) {
        frames.push_back(m_frame);
    } else if (column == 5) {
        ++whole_frames;
        if (!all_zero) {
            err += "not zero beat on frame 5\n";
            if (source_position) {
                out += "Anomaly at pos : " + std::to_string(*source_position) + "\n";
            }
        }
    }
}

} // namespace Pelgar::ORBE::test
