#include "NP_Reference_Decoder.h"

namespace Pelgar::ORBE::test {

namespace {

// The first channel of each of the 32 ADCs; the next ones follow in steps of two.
constexpr unsigned first_channel[32] = {0,   1,   24,  25,  48,  49,  72,  73,  96,  97,  120,
                                        121, 144, 145, 168, 169, 192, 193, 216, 217, 240, 241,
                                        264, 265, 288, 289, 312, 313, 336, 337, 360, 361};

// Where the wire's word (five rows of lanes 0 to 6) belongs in the 35 values of a frame.
constexpr unsigned value_of_word[35] = {
    0, 5, 10, 15, 20, 25, 30, // row 0
    1, 6, 11, 16, 21, 26, 31, // row 1
    2, 7, 12, 17, 22, 27, 32, // row 2
    3, 8, 13, 18, 23, 28, 33, // row 3
    4, 9, 14, 19, 24, 29, 34, // row 4
};

// What a counter prints that has not seen a frame: all bits set.
std::string text_of(std::int64_t counter) {
    return counter < 0 ? "4294967295" : std::to_string(counter);
}

} // namespace

void NP_Reference_Decoder::feed_block(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 910) {
        err += "Buffer size should contain at least (13 * 35) = 455 words\n";
        return;
    }
    if (bytes.size() % 910 != 0) {
        err += "Buffer size should divisible with 455 words\n";
        return;
    }
    std::vector<unsigned> words;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        words.push_back(bytes[i] + 256U * bytes[i + 1]);
    }
    for (std::size_t at = 0; at < words.size(); at += 35) {
        const bool begins_super_frame = at % 455 == 0;
        const bool is_flagged = words[at] / 0x0800 % 2 == 1;
        if (begins_super_frame && !is_flagged) {
            err += "Super frame align failure\n";
            return;
        }
        take_frame(std::span(words).subspan(at, 35));
    }
}

void NP_Reference_Decoder::take_frame(std::span<const unsigned> words) {
    std::vector<unsigned> values(35);
    for (unsigned i = 0; i < 35; ++i) {
        const unsigned lane = i % 7;
        if (words[i] / 0x1000 != lane + 1) {
            err += "Warning shift reg mismatch\n";
        }
        values[value_of_word[i]] = words[i] % 0x400;
    }
    take_values(values);
}

void NP_Reference_Decoder::take_values(const std::vector<unsigned>& values) {
    const unsigned high = values[33];
    const unsigned low = values[34];
    const std::int64_t counter20 = high * 1024 + low;
    if (counter20 != m_last_counter20 + 1) {
        if (counter20 == 0 && m_last_counter20 == 1024 * 1024 - 1) {
            out += "frame_number rolled : 0, prev count : 1048575\n";
        } else {
            err +=
                "check_frame_number_continuity failed, current counter (two part) : " + std::to_string(high) +
                " " + std::to_string(low) + ", prev counter : " + text_of(m_last_counter20) + "\n";
        }
    }
    m_last_counter20 = counter20;

    if (high == 0 && m_last_high == 1023) {
        out += "Incrementing m_three_word_counter_high_part\n";
        ++m_wraps;
    }
    m_last_high = high;

    const std::int64_t counter32 = counter20 + std::int64_t{m_wraps} * 1024 * 1024;
    if (counter32 != m_last_counter32 + 1) {
        err += " stream DW counter discontiutiy. Prev DW counter : " + text_of(m_last_counter32) +
               ", current DW counter : " + std::to_string(counter32) + "\n";
    }
    m_last_counter32 = counter32;

    const auto phase = static_cast<unsigned>(counter32 % 13);
    const auto super_frame = static_cast<unsigned>(counter32 / 13);
    const bool is_lfp = phase == 0;
    const unsigned turn = is_lfp ? super_frame % 12 : phase - 1;
    Channel_Values& channels = is_lfp ? m_lfp : m_ap;
    for (unsigned adc = 0; adc < 32; ++adc) {
        channels.at(first_channel[adc] + 2 * turn) = static_cast<std::uint16_t>(values[adc]);
    }
    if (turn == 11) {
        sets.push_back({is_lfp ? Band::LFP : Band::AP, channels});
    }
}

void NP_Reference_Decoder::restart_counters() {
    out += "reset_and_resync_counters requested.\n";
    m_wraps = 0;
}

} // namespace Pelgar::ORBE::test
