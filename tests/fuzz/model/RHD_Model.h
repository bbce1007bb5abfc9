// Road model: the words of the RHD stream and the frames in them.
#pragma once

#include "Road_Output.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace Pelgar::ORBE::road_model {

struct RHD_Frame_Words {
    std::uint32_t stamp = 0;
    std::array<std::uint16_t, 8> adc{};
    std::uint32_t ttl = 0;
};

class RHD_Model {
public:
    // Without a `listener` each frame is said to have none.
    RHD_Model(unsigned stream_count, Told& told, std::function<void(const RHD_Frame_Words&)> listener);

    void push(std::span<const std::uint16_t> words);

    // Words are missing in front of the next ones.
    void note_loss() { m_next_follows_loss = true; }

    // Words that no frame has been made of yet are dropped. After `read`.
    void forget();

    // Makes frames as long as there are words for them. An attempt for which words are missing is made again
    // when they are there.
    void read();

    std::size_t unread() const { return m_words.size() - m_at; }

    std::uint32_t frames = 0;

private:
    enum class Outcome { frame, no_frame, out_of_words, cut_off };

    Outcome attempt(RHD_Frame_Words& frame, Told& told);
    Outcome read_behind_preamble(RHD_Frame_Words& frame);
    bool next(std::uint16_t& word);

    Outcome why_none() const { return m_cursor == m_words.size() ? Outcome::out_of_words : Outcome::cut_off; }

    unsigned m_stream_count;
    Told& m_told;
    std::function<void(const RHD_Frame_Words&)> m_listener;
    std::vector<std::uint16_t> m_words; // of all times
    std::size_t m_at = 0;               // the first that belongs to no frame yet
    std::size_t m_cursor = 0;
    std::set<std::size_t> m_losses; // in front of these words
    bool m_next_follows_loss = false;
};

} // namespace Pelgar::ORBE::road_model
