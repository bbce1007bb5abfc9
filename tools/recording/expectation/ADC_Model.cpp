#include "expectation/ADC_Model.h"

#include "stream_format/Row_View.h"

#include <algorithm>

namespace Pelgar::ORBE::recording {

namespace {

// The status word: the TTL inputs 9 to 15 in bits 7 to 13, and in bit 6 whether an input has changed.
constexpr unsigned ttl_shift = 8;
constexpr std::uint32_t ttl_mask = 0xFFFE;
constexpr std::uint32_t ttl_changed = 1;
constexpr unsigned status_shift = 6;

constexpr std::uint16_t offset_binary = 0x8000;

} // namespace

ADC_Model::ADC_Model(unsigned streams) : m_streams(streams) {}

void ADC_Model::feed(std::span<const std::uint8_t> piece) {
    m_words.erase(m_words.begin(), m_words.begin() + static_cast<std::ptrdiff_t>(m_position));
    m_position = 0;
    for_each_row(piece, [&](Row_View row) {
        if (row.stream() == rhd_stream) {
            std::array<std::uint16_t, row_words> words;
            std::memcpy(words.data(), row.payload(), row_payload_bytes);
            m_words.insert(m_words.end(), words.begin(), words.end());
        }
    });
}

const ADC_Packet* ADC_Model::next() {
    while (true) {
        const auto from = m_words.begin() + static_cast<std::ptrdiff_t>(m_position);
        const auto found = std::find(from, m_words.end(), rhd_magic_word(0));
        m_position = static_cast<std::size_t>(found - m_words.begin());
        if (m_words.size() - m_position < rhd_magic_words) {
            return nullptr;
        }
        if (!magic_at(m_position)) {
            // All four words are gone, even if one of them began the next frame.
            m_position += rhd_magic_words;
            continue;
        }
        if (m_words.size() - m_position < rhd_frame_words(m_streams)) {
            return nullptr;
        }
        convert(m_position);
        m_position += rhd_frame_words(m_streams);
        return &m_packet;
    }
}

std::uint32_t ADC_Model::wide(std::size_t position) const {
    return m_words[position] | static_cast<std::uint32_t>(m_words[position + 1]) << 16;
}

bool ADC_Model::magic_at(std::size_t position) const {
    for (std::size_t i = 0; i < rhd_magic_words; ++i) {
        if (m_words[position + i] != rhd_magic_word(i)) {
            return false;
        }
    }
    return true;
}

void ADC_Model::convert(std::size_t position) {
    // Behind the magic, the time stamp of two words, the amplifier words, and what fills up.
    const std::size_t adc = position + rhd_magic_words + 2 + rhd_words_per_stream * m_streams +
                            rhd_filler_words(m_streams) + rhd_unused_words;
    for (std::size_t input = 0; input < rhd_adc_inputs; ++input) {
        m_packet.samples[input] = static_cast<std::int16_t>(m_words[adc + input] ^ offset_binary);
    }
    const std::uint32_t ttl = wide(adc + rhd_adc_inputs);
    std::uint32_t base = (ttl >> ttl_shift) & ttl_mask;
    if (ttl != m_last_ttl) {
        base |= ttl_changed;
        m_last_ttl = static_cast<std::uint16_t>(ttl);
    }
    m_packet.status = static_cast<std::uint16_t>(base << status_shift);
}

} // namespace Pelgar::ORBE::recording
