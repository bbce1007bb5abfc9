// Tools, recording library. Looks at the rows of one port: super frames, tags and frame counters.
#pragma once

#include "checker/Check_Report.h"
#include "checker/Row_Counter_Check.h"

namespace Pelgar::ORBE::recording {

class Port_Checker {
public:
    // Each row of the port, in order; `number` is its number in the file.
    void look_at(Row_View row, std::uint64_t number);

    const Port_Findings& findings() const { return m_findings; }

private:
    bool find_place(Row_View row, std::uint64_t number, bool continuous);
    void check_tags(Row_View row, std::uint64_t number);
    void check_frame_counter(Row_View row, std::uint64_t number);

    Port_Findings m_findings;
    Row_Counter_Check m_counter;
    bool m_in_step = false; // the last row was part of a super frame
    std::size_t m_row = 0;  // the next row's place in its super frame
    bool m_any_frame = false;
    std::uint32_t m_counter_high = 0;
    std::uint32_t m_next_frame = 0;
};

} // namespace Pelgar::ORBE::recording
