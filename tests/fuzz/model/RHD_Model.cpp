#include "RHD_Model.h"

#include <utility>

namespace Pelgar::ORBE::road_model {

RHD_Model::RHD_Model(unsigned stream_count, Told& told, std::function<void(const RHD_Frame_Words&)> listener)
    : m_stream_count(stream_count), m_told(told), m_listener(std::move(listener)) {}

void RHD_Model::push(std::span<const std::uint16_t> words) {
    if (words.empty()) {
        return;
    }
    if (std::exchange(m_next_follows_loss, false)) {
        m_losses.insert(m_words.size());
    }
    m_words.insert(m_words.end(), words.begin(), words.end());
}

// What is printed about the words of an unfinished frame has been printed as they came.
void RHD_Model::forget() {
    RHD_Frame_Words unfinished;
    m_cursor = m_at;
    attempt(unfinished, m_told);
    m_at = m_words.size();
}

void RHD_Model::read() {
    while (true) {
        RHD_Frame_Words frame;
        Told told;
        m_cursor = m_at;
        const Outcome outcome = attempt(frame, told);
        if (outcome == Outcome::out_of_words) {
            return;
        }
        m_at = m_cursor;
        m_told.out += told.out;
        m_told.err += told.err;
        if (outcome == Outcome::frame) {
            ++frames;
            if (m_listener) {
                m_listener(frame);
            } else {
                m_told.out += "There is no RHD frame listener\n";
            }
        }
    }
}

// The next word; none at the end of the words and, within an attempt, where some are lost.
bool RHD_Model::next(std::uint16_t& word) {
    const bool is_cut_off = m_cursor != m_at && m_losses.contains(m_cursor);
    if (is_cut_off || m_cursor == m_words.size()) {
        return false;
    }
    word = m_words[m_cursor++];
    return true;
}

RHD_Model::Outcome RHD_Model::attempt(RHD_Frame_Words& frame, Told& told) {
    std::uint16_t word = 0;
    if (!next(word)) {
        return why_none();
    }
    if (word != 0x2A53) {
        told.err += "Resync warning 1\n";
        while (word != 0x2A53) {
            if (!next(word)) {
                return why_none();
            }
        }
        told.out += "Resync info 1\n";
    }
    std::array<std::uint16_t, 3> rest{};
    for (std::uint16_t& part : rest) {
        if (!next(part)) {
            return why_none();
        }
    }
    if (rest != std::array<std::uint16_t, 3>{0x3813, 0x2AAA, 0xD7A2}) {
        told.err += "invalid RHD frame preamble \n";
        return Outcome::no_frame;
    }
    return read_behind_preamble(frame);
}

RHD_Model::Outcome RHD_Model::read_behind_preamble(RHD_Frame_Words& frame) {
    const std::size_t before_adc = std::size_t{35} * m_stream_count + m_stream_count % 4 + 2;
    std::vector<std::uint16_t> words(2 + before_adc + 8 + 2 + 2);
    for (std::uint16_t& word : words) {
        if (!next(word)) {
            return why_none();
        }
    }
    const std::size_t adc = 2 + before_adc;
    frame.stamp = words[0] + 65536U * words[1];
    for (std::size_t input = 0; input < 8; ++input) {
        frame.adc[input] = words[adc + input];
    }
    frame.ttl = words[adc + 8] + 65536U * words[adc + 9];
    return Outcome::frame;
}

} // namespace Pelgar::ORBE::road_model
