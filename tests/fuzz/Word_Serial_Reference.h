// Test support: what must become of a probe's word-serial input, worked out from all the words so far, slowly
// and without regard to the code it is compared with.
#pragma once

#include "Recording_Listeners.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Pelgar::ORBE::test {

class Word_Serial_Reference {
public:
    void feed(std::uint16_t word);

    void reset_sync() { m_in_sync = false; }

    // What the source of the words would answer when asked for its position; none when there is no source.
    std::optional<std::int64_t> source_position;

    std::vector<Adc_Frame> frames;
    std::string out;
    std::string err;
    std::uint32_t sync_patterns = 0;
    std::uint32_t whole_frames = 0;

private:
    // The word that came so many words ago, or 0.
    unsigned word_before(std::size_t words_ago) const;
    bool ends_with_sync_pattern() const;
    unsigned value_of_lane(unsigned lane) const;
    void take_column(unsigned column);

    std::vector<std::uint16_t> m_words;
    bool m_in_sync = false;
    // The next word's place among the 30 of a frame: six columns of five words.
    unsigned m_place = 0;
    Adc_Frame m_frame{};
};

} // namespace Pelgar::ORBE::test
