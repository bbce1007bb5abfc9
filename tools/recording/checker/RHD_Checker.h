// Tools, recording library. Looks at the rows of the RHD stream: how long the frames are, which are cut,
// which have no preamble, and how many ADC packets come out of them.
#pragma once

#include "checker/Check_Report.h"
#include "checker/Row_Counter_Check.h"

#include <map>

namespace Pelgar::ORBE::recording {

class RHD_Checker {
public:
    // Each row of the stream, in order; `number` is its number in the file.
    void look_at(Row_View row, std::uint64_t number);

    // Complete only after the last row, since the usual length of the frames shows only then.
    RHD_Findings findings() const;

private:
    // `row` is the number of the row in which a frame starts whose preamble ends with this word.
    void take(std::uint16_t word, std::uint64_t row);
    std::size_t usual_streams() const;

    RHD_Findings m_findings;
    Row_Counter_Check m_counter;
    std::uint64_t m_last_words = 0; // the last four words, the newest on top
    std::uint64_t m_words = 0;
    bool m_any_frame = false;
    std::uint64_t m_frame_start = 0;            // in words, of the frame seen last
    std::uint64_t m_frame_row = 0;              // the row in which it starts
    std::uint64_t m_last_row = 0;               // the number of the row before
    std::map<std::uint64_t, Finding> m_lengths; // words from one preamble to the next: how often, and where
};

} // namespace Pelgar::ORBE::recording
